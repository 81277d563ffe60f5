#pragma once

#include "netaddr/SubnetAddress.h"

namespace quillet {

/// An IPv4 address in dotted form, with an optional prefix length.
class IPv4 : public SubnetAddress {
 public:
  /// Reads four octets of one to three decimal digits, each up to 255, and maybe "/" and one or two
  /// digits. Errors: "Invalid subnet mask" for a prefix length above 32, "Invalid IPv4 Address".
  explicit IPv4(std::string_view address);

  /// Big-endian: 0x01020304 is 1.2.3.4.
  static IPv4 ipv4FromInteger(std::uint32_t value);
  /// Eight hexadecimal digits, ":" between them ignored and zeros added in front. What is no
  /// hexadecimal gives an address that is not valid; digits after the eighth are ignored.
  static IPv4 ipv4FromHex(std::string_view hex);
  /// The low 32 bits of the value.
  static IPv4 fromBigInteger(const BigInt& value);

  /// Whether the whole text is four dotted octets, leading zeros included.
  static bool isDotted(std::string_view text);

  /// Reads a dotted address without prefix length into `parsedAddress`, `valid` and `error`.
  void parse(std::string_view address);

  [[nodiscard]] std::string addressMinusSufix() const {
    return std::string(addressWithoutSubnet());
  }

  [[nodiscard]] std::vector<std::string> parsedAddress() const override;
  [[nodiscard]] std::optional<std::string> correctForm() const override;
  /// 0 when the address is not valid.
  [[nodiscard]] BigInt bigInteger() const override;
  [[nodiscard]] std::string reversedForm() const override;
  [[nodiscard]] platform::Data data() const override;
  /// The octets in hexadecimal, as in 01:02:03:04.
  [[nodiscard]] std::string hex() const;
  /// The address as two groups of an IPv6 address, as in 102:304.
  [[nodiscard]] std::string v6Group() const;

  [[nodiscard]] IPv4 startAddress() const { return fromBigInteger(boundary('0')); }
  [[nodiscard]] IPv4 endAddress() const { return fromBigInteger(boundary('1')); }

 private:
  [[nodiscard]] std::string_view addressWithoutSubnet() const override {
    return std::string_view(address()).substr(0, sizeWithoutSubnet_);
  }

  std::size_t sizeWithoutSubnet_ = 0;
  std::optional<std::string> parsed_;  // the text of the octets
};

}  // namespace quillet
