#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "dns_tools/IP.h"
#include "dns_tools/IPv4.h"
#include "dns_tools/IPv6.h"
#include "dns_tools/ResourceRecord.h"

namespace DnsToolsSocket {

class Reader;

/// A or AAAA, by the family of `Address` (RFC 1035 section 3.4.1, RFC 3596 section 2.2).
template <IP Address>
class HostRecord final : public ResourceRecord {
 public:
  HostRecord(std::string name, bool unique, std::uint16_t internetClass, std::uint32_t ttl,
             Address address);
  /// Reads RDLENGTH and RDATA; unusable when the reader fails.
  HostRecord(Head&& head, Reader& reader);

  [[nodiscard]] std::uint16_t type() const override { return Address::kTypeCode; }
  void describe(std::string& out) const override;
  [[nodiscard]] std::unique_ptr<ResourceRecord> clone() const override;

  /// Replaces `ip`. A text that is no address of the family is one log line and changes nothing.
  void changeIP(std::string_view text);

  /// By name alone, as the hash.
  bool operator==(const HostRecord& other) const { return name() == other.name(); }

  Address ip;

 private:
  void writeData(Writer& writer) const override;
};

extern template class HostRecord<IPv4>;
extern template class HostRecord<IPv6>;

}  // namespace DnsToolsSocket

template <class Address>
struct std::hash<DnsToolsSocket::HostRecord<Address>> {
  std::size_t operator()(const DnsToolsSocket::HostRecord<Address>& record) const {
    return std::hash<std::string>()(record.name());
  }
};
