#pragma once

#include <netinet/in.h>

#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "dns_tools/RecordType.h"
#include "platform/base/Data.h"

namespace DnsToolsSocket {

/// An IPv6 address as a DNS record carries it; models `IP`.
class IPv6 {
 public:
  /// The type of the record that holds such an address.
  static constexpr std::uint16_t kTypeCode = RecordType::host6;
  static constexpr std::string_view kHostRecordName = "HostRecord<DnsToolsSocket.IPv6>";

  IPv6() = default;
  explicit IPv6(in6_addr value) : address(value) {}

  /// Absent unless there are exactly 16 octets.
  static std::optional<IPv6> networkBytes(platform::DataView octets);
  /// Absent when `inet_pton` rejects the text.
  static std::optional<IPv6> fromPresentation(std::string_view text);

  /// The octets in network order, borrowed.
  [[nodiscard]] platform::DataView bytes() const;
  /// The text that `inet_ntop` gives.
  [[nodiscard]] std::optional<std::string> presentationString() const;
  /// That text, or "Invalid IPv6 address".
  [[nodiscard]] std::string presentation() const;
  [[nodiscard]] std::string debugDescription() const { return presentation(); }
  void describe(std::string& out) const;

  bool operator==(const IPv6& other) const;

  /// In network order.
  in6_addr address{};
};

inline std::optional<IPv6> IPv6::networkBytes(platform::DataView octets) {
  IPv6 ip;
  if (octets.size() != sizeof ip.address) {
    return std::nullopt;
  }
  std::memcpy(&ip.address, octets.data(), sizeof ip.address);
  return ip;
}

}  // namespace DnsToolsSocket
