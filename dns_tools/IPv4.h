#pragma once

#include <netinet/in.h>

#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "dns_tools/RecordType.h"
#include "platform/base/Data.h"

namespace DnsToolsSocket {

/// An IPv4 address as a DNS record carries it; models `IP`.
class IPv4 {
 public:
  /// The type of the record that holds such an address.
  static constexpr std::uint16_t kTypeCode = RecordType::host;
  static constexpr std::string_view kHostRecordName = "HostRecord<DnsToolsSocket.IPv4>";

  IPv4() = default;
  explicit IPv4(in_addr value) : address(value) {}
  /// The most significant octet of `value` is the first of the address.
  explicit IPv4(std::uint32_t value);

  /// Absent unless there are exactly 4 octets.
  static std::optional<IPv4> networkBytes(platform::DataView octets);
  /// Absent when `inet_pton` rejects the text.
  static std::optional<IPv4> fromPresentation(std::string_view text);

  /// The octets in network order, borrowed.
  [[nodiscard]] platform::DataView bytes() const;
  /// The text that `inet_ntop` gives.
  [[nodiscard]] std::optional<std::string> presentationString() const;
  /// That text, or "Invalid IPv4 address".
  [[nodiscard]] std::string presentation() const;
  [[nodiscard]] std::string debugDescription() const { return presentation(); }
  void describe(std::string& out) const;

  bool operator==(const IPv4& other) const;

  /// In network order.
  in_addr address{};
};

inline std::optional<IPv4> IPv4::networkBytes(platform::DataView octets) {
  IPv4 ip;
  if (octets.size() != sizeof ip.address) {
    return std::nullopt;
  }
  std::memcpy(&ip.address, octets.data(), sizeof ip.address);
  return ip;
}

}  // namespace DnsToolsSocket
