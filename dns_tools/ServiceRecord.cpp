#include "dns_tools/ServiceRecord.h"

#include <utility>

#include "dns_tools/Reader.h"
#include "dns_tools/StructureText.h"
#include "dns_tools/Writer.h"

namespace DnsToolsSocket {

ServiceRecord::ServiceRecord(std::string name, bool unique, std::uint16_t internetClass,
                             std::uint32_t ttl, std::uint16_t itsPriority, std::uint16_t itsWeight,
                             std::uint16_t itsPort, std::string itsServer)
    : ResourceRecord({std::move(name), unique, internetClass, ttl}),
      priority(itsPriority),
      weight(itsWeight),
      port(itsPort),
      server(std::move(itsServer)) {}

ServiceRecord::ServiceRecord(Head&& head, Reader& reader) : ResourceRecord(std::move(head)) {
  const auto end = reader.readDataEnd();
  priority = reader.readUInt16();
  weight = reader.readUInt16();
  port = reader.readUInt16();
  server = reader.readName();
  reader.expectDataEnd(end);
}

void ServiceRecord::describe(std::string& out) const {
  StructureText text(out, "ServiceRecord");
  describeHead(text);
  text.field("priority", priority)
      .field("weight", weight)
      .field("port", port)
      .field("server", server);
}

std::unique_ptr<ResourceRecord> ServiceRecord::clone() const {
  return std::make_unique<ServiceRecord>(*this);
}

void ServiceRecord::writeData(Writer& writer) const {
  writer.writeIntegers(priority, weight, port);
  writer.writeName(server);
}

}  // namespace DnsToolsSocket
