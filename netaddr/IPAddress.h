#pragma once

#include <variant>

#include "netaddr/IPv4.h"
#include "netaddr/IPv6.h"

namespace quillet {

/// An address of either family, which answers every query of both.
class IPAddress {
 public:
  /// An IPv4 address when the text is one; otherwise what IPv6 makes of it, errors included.
  explicit IPAddress(std::string_view address);
  explicit IPAddress(IPv4 ip) : underlyingAddress_(std::move(ip)) {}
  explicit IPAddress(IPv6 ip) : underlyingAddress_(std::move(ip)) {}

  static IPAddress addressFromString(std::string_view address) { return IPAddress(address); }
  /// The address of 4 or 16 bytes in network byte order. Any other number throws "ipInvalidLength",
  /// "The provided data length does not correspond to neighter a IPv4 nor a IPv6 address".
  static IPAddress addressWithData(platform::DataView bytes);

  [[nodiscard]] const std::variant<IPv4, IPv6>& underlyingAddress() const {
    return underlyingAddress_;
  }

  // What SubnetAddress says of each.
  [[nodiscard]] bool valid() const { return ip().valid(); }
  [[nodiscard]] bool correct() const { return ip().correct(); }
  [[nodiscard]] const std::optional<std::string>& error() const { return ip().error(); }
  [[nodiscard]] const std::string& address() const { return ip().address(); }
  [[nodiscard]] int groups() const { return ip().groups(); }
  [[nodiscard]] bool v4() const { return ip().v4(); }
  [[nodiscard]] std::string subnet() const { return ip().subnet(); }
  [[nodiscard]] int subnetMask() const { return ip().subnetMask(); }
  [[nodiscard]] const std::string& parsedSubnet() const { return ip().parsedSubnet(); }
  [[nodiscard]] std::vector<std::string> parsedAddress() const { return ip().parsedAddress(); }
  [[nodiscard]] std::string mask() const { return ip().mask(); }
  [[nodiscard]] std::optional<std::string> correctForm() const { return ip().correctForm(); }
  [[nodiscard]] BigInt bigInteger() const { return ip().bigInteger(); }
  [[nodiscard]] IPAddress startAddress() const;
  [[nodiscard]] IPAddress endAddress() const;
  [[nodiscard]] std::string maskWith(int n) const { return ip().maskWith(n); }
  [[nodiscard]] std::string bitsBase2WithStart(int start, int end) const {
    return ip().bitsBase2WithStart(start, end);
  }
  [[nodiscard]] bool isInSubnet(const IPAddress& other) const {
    return ip().isInSubnet(other.ip());
  }
  [[nodiscard]] std::string binaryZeroPad() const { return ip().binaryZeroPad(); }
  [[nodiscard]] std::string reversedForm() const { return ip().reversedForm(); }
  [[nodiscard]] platform::Data data() const { return ip().data(); }

 private:
  [[nodiscard]] const SubnetAddress& ip() const;

  std::variant<IPv4, IPv6> underlyingAddress_;
};

}  // namespace quillet
