#include "dns_tools/Record.h"

#include <utility>

#include "dns_tools/Reader.h"
#include "dns_tools/StructureText.h"
#include "dns_tools/Writer.h"

namespace DnsToolsSocket {

Record::Record(std::string name, bool unique, std::uint16_t internetClass, std::uint32_t ttl,
               std::uint16_t type, platform::Data bytes)
    : ResourceRecord({std::move(name), unique, internetClass, ttl}),
      data(std::move(bytes)),
      type_(type) {}

Record::Record(Head&& head, std::uint16_t type, Reader& reader)
    : ResourceRecord(std::move(head)), type_(type) {
  const auto size = reader.readUInt16();
  const auto bytes = reader.readBytes(size, DecodeError::invalidDataSize);
  data.assign(bytes.begin(), bytes.end());
}

void Record::describe(std::string& out) const {
  StructureText text(out, "Record");
  describeHead(text);
  text.field("type", type_).field("data", data);
}

std::unique_ptr<ResourceRecord> Record::clone() const { return std::make_unique<Record>(*this); }

void Record::writeData(Writer& writer) const { writer.writeBytes(data); }

}  // namespace DnsToolsSocket
