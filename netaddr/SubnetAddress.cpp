#include "netaddr/SubnetAddress.h"

#include <algorithm>
#include <charconv>

#include "netaddr/PaddedText.h"

namespace quillet {

SubnetAddress::SubnetAddress(std::string_view address, int width, int groups)
    : address_(address), width_(width), groups_(groups), subnetMask_(width) {}

std::string SubnetAddress::subnet() const {
  std::string text("/");
  appendDecimal(text, static_cast<std::uint64_t>(subnetMask_));
  return text;
}

bool SubnetAddress::correct() const {
  const bool shortestSubnet = subnetMask_ == width_ || parsedSubnet_ == subnet().substr(1);
  return shortestSubnet && addressWithoutSubnet() == correctForm();
}

void SubnetAddress::fail(std::string error) {
  valid_ = false;
  error_ = std::move(error);
}

void SubnetAddress::reset() {
  error_.reset();
  valid_ = false;
}

bool SubnetAddress::setSubnet(std::string_view digits) {
  parsedSubnet_ = digits;
  std::from_chars(digits.data(), digits.data() + digits.size(), subnetMask_);
  if (subnetMask_ > width_) {
    fail(std::string(kInvalidSubnetMask));
    return false;
  }
  return true;
}

std::string SubnetAddress::binaryZeroPad() const {
  return stringByPaddingLeftToLength(bigInteger().toStringWithRadix(2),
                                     static_cast<std::size_t>(width_), "0");
}

std::string SubnetAddress::bitsBase2WithStart(int start, int end) const {
  const int first = std::clamp(start, 0, width_);
  const int last = std::clamp(end, first, width_);
  return binaryZeroPad().substr(static_cast<std::size_t>(first),
                                static_cast<std::size_t>(last - first));
}

bool SubnetAddress::isInSubnet(const SubnetAddress& other) const {
  if (!valid_ || !other.valid_ || width_ != other.width_ || subnetMask_ < other.subnetMask_) {
    return false;
  }
  // The first bit in which they differ lies past the other's mask.
  return bigInteger().xOr(other.bigInteger()).bitCount() <= width_ - other.subnetMask_;
}

BigInt SubnetAddress::boundary(char hostBit) const {
  std::string bits = mask();
  bits.resize(static_cast<std::size_t>(width_), hostBit);
  return {bits, 2};
}

}  // namespace quillet
