#include "netaddr/IPv6.h"

#include <algorithm>
#include <utility>

#include "netaddr/IPv4.h"
#include "netaddr/IPv6Syntax.h"

namespace quillet {
namespace {

constexpr int kWidth = 128;

}  // namespace

IPv6::IPv6(std::string_view address, int groups) : SubnetAddress(address, kWidth, groups) {
  const auto rest = takeSubnet(address);
  if (!rest) {
    return;
  }
  const std::size_t zone = findIPv6Zone(*rest);
  zone_ = rest->substr(zone);
  sizeWithoutSuffix_ = zone;
  parse(rest->substr(0, zone));
}

std::optional<std::string_view> IPv6::takeSubnet(std::string_view address) {
  if (address.find('/') == std::string_view::npos) {
    return address;
  }
  const IPv6Prefix prefix = findIPv6Prefix(address);
  if (!prefix.digits.empty() && !setSubnet(prefix.digits)) {
    return std::nullopt;
  }
  if (std::ranges::count(address, '/') > (prefix.digits.empty() ? 0 : 1)) {
    fail(std::string(kInvalidSubnetMask));
    return std::nullopt;
  }
  return address.substr(0, prefix.begin);
}

void IPv6::parse(std::string_view address) {
  reset();
  v4_ = false;
  parsedCount_ = 0;
  elidedGroups_ = elisionBegin_ = elisionEnd_ = 0;
  std::optional<std::string> rewritten;
  if (address.find('.') != std::string_view::npos) {
    rewritten = parsev4inv6(address);
    if (!rewritten) {
      return;
    }
    address = *rewritten;
  }
  const auto read = readIPv6Groups(address);
  valid_ = read && expand(*read);
  if (!valid_) {
    fail(ipv6Error(address, groups()));
  }
}

std::optional<std::string> IPv6::parsev4inv6(std::string_view address) {
  const std::size_t last = address.rfind(':') + 1;  // 0 without a colon
  const std::string_view dotted = address.substr(last);
  if (!IPv4::isDotted(dotted)) {
    return std::string(address);
  }
  const IPv4 ipv4(dotted);
  const auto leadingZero = [](const std::string& octet) {
    return octet.size() > 1 && octet[0] == '0';
  };
  if (std::ranges::any_of(ipv4.parsedAddress(), leadingZero)) {
    fail("IPv4 addresses cannot have leading zeroes");
    return std::nullopt;
  }
  v4_ = true;
  return std::string(address.substr(0, last)).append(ipv4.v6Group());
}

bool IPv6::expand(const IPv6Groups& read) {
  const auto expected = static_cast<std::size_t>(std::clamp(groups(), 0, kGroups + 1));
  const bool fits = read.elision ? read.count < expected : read.count == expected;
  if (!fits || expected > kGroups) {
    return false;
  }
  values_ = read.values;
  parsedCount_ = expected;
  elidedGroups_ = static_cast<int>(expected - read.count);
  if (read.elision) {
    Group* const first = values_.data();  // beyond those that were read there are zeros
    std::rotate(first + *read.elision, first + read.count, first + expected);
    elisionBegin_ = static_cast<int>(*read.elision);
    elisionEnd_ = elisionBegin_ + elidedGroups_;
  }
  return true;
}

}  // namespace quillet
