#pragma once

#include <array>
#include <span>

#include "netaddr/SubnetAddress.h"

namespace quillet {

struct IPv6Groups;

/// An IPv6 address (RFC 4291 section 2.2) with an optional prefix length and zone. Hexadecimal
/// digits may be of either case; what is read is kept in lower case.
class IPv6 : public SubnetAddress {
 public:
  static constexpr int kGroups = 8;

  /// A run of groups, from `begin` up to, not including, `end`.
  struct Slice {
    std::size_t begin = 0;
    std::size_t end = 0;
  };

  /// Stands in a list of groups for a run of zeros: no group is an empty text.
  static constexpr std::string_view kElision{};

  /// Reads the groups, "::" for a run of zeros, maybe dotted IPv4 at the end, a prefix length and a
  /// zone. Errors: "Invalid subnet mask", "IPv4 addresses cannot have leading zeroes", "Bad
  /// character...", "Address failed regex: ...", "Too many :: groups found", "Error parsing groups"
  /// (a "::" that stands for nothing), "Incorrect number of groups found". Part of an address is
  /// read with fewer groups than 8; there is none with more.
  explicit IPv6(std::string_view address, int groups = kGroups);

  /// The low 128 bits of the value.
  static IPv6 fromBigInteger(const BigInt& value);

  /// The groups before the run, `kElision`, and the groups after it. A run that reaches past the
  /// groups ends with them.
  static std::vector<std::string> compact(const std::vector<std::string>& groups, Slice slice);

  /// Reads an address without prefix length and zone into `parsedAddress`, `valid`, `v4`, `error`
  /// and the fields of the elision.
  void parse(std::string_view address);
  /// The first step of `parse`: the address with a dotted IPv4 at its end rewritten as two groups,
  /// and `v4` set. Absent, with the error set, when an octet of it has a leading zero.
  std::optional<std::string> parsev4inv6(std::string_view address);

  /// The text without prefix length and zone.
  [[nodiscard]] std::string addressMinusSuffix() const {
    return std::string(addressWithoutSubnet());
  }
  /// The suffix that begins with "%"; empty when there is none.
  [[nodiscard]] const std::string& zone() const { return zone_; }
  /// How many groups "::" stood for, and the range that it filled; 0 without one.
  [[nodiscard]] int elidedGroups() const { return elidedGroups_; }
  [[nodiscard]] int elisionBegin() const { return elisionBegin_; }
  [[nodiscard]] int elisionEnd() const { return elisionEnd_; }

  [[nodiscard]] std::vector<std::string> parsedAddress() const override;
  /// With the longest run of zeros, the first of equally long ones, written as "::".
  [[nodiscard]] std::optional<std::string> correctForm() const override;
  /// All groups with all four digits.
  [[nodiscard]] std::string canonicalForm() const;
  /// Whether the text is the one that `canonicalForm` gives.
  [[nodiscard]] bool canonical() const;
  /// All groups as five decimal digits.
  [[nodiscard]] std::string decimal() const;
  /// The last 32 bits as dotted IPv4.
  [[nodiscard]] std::string v4inv6() const;
  /// The nibbles of the prefix in reverse order, in ip6.arpa.
  [[nodiscard]] std::string reversedForm() const override;
  [[nodiscard]] BigInt bigInteger() const override;
  [[nodiscard]] platform::Data data() const override;

  /// The bits of a range as text of 0 and 1, or as lower-case hexadecimal with a digit for every
  /// four bits begun.
  [[nodiscard]] std::string bitsWithStart(int start, int end) const {
    return bitsBase2WithStart(start, end);
  }
  [[nodiscard]] std::string bitsBase16WithStart(int start, int end) const;

  [[nodiscard]] IPv6 startAddress() const { return fromBigInteger(boundary('0')); }
  [[nodiscard]] IPv6 endAddress() const { return fromBigInteger(boundary('1')); }

 private:
  using Group = std::uint16_t;

  [[nodiscard]] std::string_view addressWithoutSubnet() const override {
    return std::string_view(address()).substr(0, sizeWithoutSuffix_);
  }
  /// The text before the prefix length; absent, with the error set, when that is wrong.
  std::optional<std::string_view> takeSubnet(std::string_view address);
  /// Takes the groups that were read, zeros where "::" stood; false when there are too few or too
  /// many.
  bool expand(const IPv6Groups& read);
  [[nodiscard]] std::span<const Group> parsed() const { return {values_.data(), parsedCount_}; }

  std::size_t sizeWithoutSuffix_ = 0;
  std::array<Group, kGroups> values_{};
  std::size_t parsedCount_ = 0;  // none, or all that are expected
  std::string zone_;
  int elidedGroups_ = 0;
  int elisionBegin_ = 0;
  int elisionEnd_ = 0;
};

}  // namespace quillet
