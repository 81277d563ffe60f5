#include "dns_tools/NameServerRecord.h"

#include <utility>

#include "dns_tools/Reader.h"
#include "dns_tools/StructureText.h"
#include "dns_tools/Writer.h"

namespace DnsToolsSocket {

NameServerRecord::NameServerRecord(std::string name, std::uint16_t type,
                                   std::uint16_t internetClass, bool unique, std::uint32_t ttl,
                                   std::string server)
    : ResourceRecord({std::move(name), unique, internetClass, ttl}),
      nameServer(std::move(server)),
      type_(type) {}

NameServerRecord::NameServerRecord(Head&& head, Reader& reader)
    : ResourceRecord(std::move(head)), type_(RecordType::nameServer) {
  const auto end = reader.readDataEnd();
  nameServer = reader.readName();
  reader.expectDataEnd(end);
}

void NameServerRecord::describe(std::string& out) const {
  StructureText text(out, "NameServerRecord");
  describeHead(text);
  text.field("type", type_).field("nameServer", nameServer);
}

std::unique_ptr<ResourceRecord> NameServerRecord::clone() const {
  return std::make_unique<NameServerRecord>(*this);
}

void NameServerRecord::writeData(Writer& writer) const { writer.writeName(nameServer); }

}  // namespace DnsToolsSocket
