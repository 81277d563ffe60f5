#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "netaddr/BigInt.h"
#include "platform/base/Data.h"

namespace quillet {

/// What IPv4 and IPv6 have in common: an address read from a text, and the subnet of which it is a
/// part.
///
/// Reading never throws: a text that is no address gives an object that is not `valid` and tells
/// why in `error`. Every query may be asked of it too and works on what has been read: absent
/// groups count as 0, text forms are empty when there are none, and it is `correct` never and in no
/// subnet.
class SubnetAddress {
 public:
  virtual ~SubnetAddress() = default;

  [[nodiscard]] bool valid() const { return valid_; }
  [[nodiscard]] const std::optional<std::string>& error() const { return error_; }
  /// The text as it was passed in.
  [[nodiscard]] const std::string& address() const { return address_; }
  /// The groups' texts, octets for IPv4. Empty when the text could not be split into any.
  [[nodiscard]] virtual std::vector<std::string> parsedAddress() const = 0;
  /// The number of groups expected.
  [[nodiscard]] int groups() const { return groups_; }
  /// Whether it was written, at its end at least, as dotted IPv4.
  [[nodiscard]] bool v4() const { return v4_; }

  /// "/" and the prefix length, the whole width when the text named none.
  [[nodiscard]] std::string subnet() const;
  /// The prefix length as a number; above the width only when the text said so, which is not valid.
  [[nodiscard]] int subnetMask() const { return subnetMask_; }
  /// The digits of the prefix length as they were written.
  [[nodiscard]] const std::string& parsedSubnet() const { return parsedSubnet_; }

  /// Whether the text is the one `correctForm` gives, prefix length included.
  [[nodiscard]] bool correct() const;
  /// The shortest text of the address; absent when no groups have been read.
  [[nodiscard]] virtual std::optional<std::string> correctForm() const = 0;
  [[nodiscard]] virtual BigInt bigInteger() const = 0;
  /// The name under which the address is looked up in reverse, with its final dot.
  [[nodiscard]] virtual std::string reversedForm() const = 0;
  /// The address in network byte order: 4 or 16 bytes.
  [[nodiscard]] virtual platform::Data data() const = 0;

  /// All bits as text of 0 and 1, the most significant first.
  [[nodiscard]] std::string binaryZeroPad() const;
  /// The bits from `start` up to, not including, `end`; what lies outside is cut off.
  [[nodiscard]] std::string bitsBase2WithStart(int start, int end) const;
  /// The first n bits.
  [[nodiscard]] std::string maskWith(int n) const { return bitsBase2WithStart(0, n); }
  /// The bits that all addresses of the subnet share.
  [[nodiscard]] std::string mask() const { return maskWith(subnetMask_); }
  /// Whether this address, or the whole subnet that it names, lies in the other's. Addresses of two
  /// families have no bits to compare: false.
  [[nodiscard]] bool isInSubnet(const SubnetAddress& other) const;

 protected:
  SubnetAddress(std::string_view address, int width, int groups);
  SubnetAddress(const SubnetAddress&) = default;
  SubnetAddress(SubnetAddress&&) = default;
  SubnetAddress& operator=(const SubnetAddress&) = default;
  SubnetAddress& operator=(SubnetAddress&&) = default;

  /// The text that was read, without its prefix length.
  [[nodiscard]] virtual std::string_view addressWithoutSubnet() const = 0;

  void fail(std::string error);
  /// Neither valid nor wrong, as before anything has been read.
  void reset();
  /// Takes at most three digits as the prefix length; false, with the error set, for one above the
  /// width.
  bool setSubnet(std::string_view digits);
  /// The subnet's first address for '0', its last for '1'.
  [[nodiscard]] BigInt boundary(char hostBit) const;

  bool valid_ = false;
  bool v4_ = false;

 private:
  std::string address_;
  std::string parsedSubnet_;  // three digits at most: no allocation
  std::optional<std::string> error_;
  int width_;
  int groups_;
  int subnetMask_;
};

/// Reported for a prefix length above the width or a slash that begins none.
inline constexpr std::string_view kInvalidSubnetMask = "Invalid subnet mask";

}  // namespace quillet
