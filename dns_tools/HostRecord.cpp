#include "dns_tools/HostRecord.h"

#include <utility>

#include "dns_tools/Reader.h"
#include "dns_tools/StructureText.h"
#include "dns_tools/Writer.h"
#include "platform/log/NSLog.h"

namespace DnsToolsSocket {

template <IP Address>
HostRecord<Address>::HostRecord(std::string name, bool unique, std::uint16_t internetClass,
                                std::uint32_t ttl, Address address)
    : ResourceRecord({std::move(name), unique, internetClass, ttl}), ip(address) {}

template <IP Address>
HostRecord<Address>::HostRecord(Head&& head, Reader& reader) : ResourceRecord(std::move(head)) {
  const auto size = reader.readUInt16();
  const auto bytes = reader.readBytes(size, DecodeError::invalidDataSize);
  if (const auto address = Address::networkBytes(bytes)) {
    ip = *address;
  } else {
    reader.fail(DecodeError::invalidIPAddress);
  }
}

template <IP Address>
void HostRecord<Address>::describe(std::string& out) const {
  StructureText text(out, Address::kHostRecordName);
  describeHead(text);
  text.field("ip", ip);
}

template <IP Address>
std::unique_ptr<ResourceRecord> HostRecord<Address>::clone() const {
  return std::make_unique<HostRecord>(*this);
}

template <IP Address>
void HostRecord<Address>::changeIP(std::string_view text) {
  if (const auto address = Address::fromPresentation(text)) {
    ip = *address;
  } else {
    platform::NSLog("*** wrong ip ***");
  }
}

template <IP Address>
void HostRecord<Address>::writeData(Writer& writer) const {
  writer.writeBytes(ip.bytes());
}

template class HostRecord<IPv4>;
template class HostRecord<IPv6>;

}  // namespace DnsToolsSocket
