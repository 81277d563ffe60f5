#include "dns_tools/AliasRecord.h"

#include <utility>

#include "dns_tools/Reader.h"
#include "dns_tools/StructureText.h"
#include "dns_tools/Writer.h"

namespace DnsToolsSocket {

AliasRecord::AliasRecord(std::string name, bool unique, std::uint16_t internetClass,
                         std::uint32_t ttl, std::string target)
    : ResourceRecord({std::move(name), unique, internetClass, ttl}),
      canonicalName(std::move(target)) {}

AliasRecord::AliasRecord(Head&& head, Reader& reader) : ResourceRecord(std::move(head)) {
  reader.skip(2);  // RDLENGTH: the name tells its own length
  canonicalName = reader.readName();
}

void AliasRecord::describe(std::string& out) const {
  StructureText text(out, "AliasRecord");
  describeHead(text);
  text.field("canonicalName", canonicalName);
}

std::unique_ptr<ResourceRecord> AliasRecord::clone() const {
  return std::make_unique<AliasRecord>(*this);
}

void AliasRecord::writeData(Writer& writer) const { writer.writeName(canonicalName); }

}  // namespace DnsToolsSocket
