#include "dns_tools/PointerRecord.h"

#include <utility>

#include "dns_tools/Reader.h"
#include "dns_tools/StructureText.h"
#include "dns_tools/Writer.h"

namespace DnsToolsSocket {

PointerRecord::PointerRecord(std::string name, bool unique, std::uint16_t internetClass,
                             std::uint32_t ttl, std::string target)
    : ResourceRecord({std::move(name), unique, internetClass, ttl}),
      destination(std::move(target)) {}

PointerRecord::PointerRecord(Head&& head, Reader& reader) : ResourceRecord(std::move(head)) {
  reader.skip(2);  // RDLENGTH: the name tells its own length
  destination = reader.readName();
}

void PointerRecord::describe(std::string& out) const {
  StructureText text(out, "PointerRecord");
  describeHead(text);
  text.field("destination", destination);
}

std::unique_ptr<ResourceRecord> PointerRecord::clone() const {
  return std::make_unique<PointerRecord>(*this);
}

void PointerRecord::writeData(Writer& writer) const { writer.writeName(destination); }

}  // namespace DnsToolsSocket
