#include "netaddr/IPv6.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "netaddr/IPv4.h"
#include "netaddr/IPv6Syntax.h"
#include "netaddr/PaddedText.h"

namespace quillet {
namespace {

constexpr int kWidth = 128;
constexpr std::string_view kWrongGroupCount = "Incorrect number of groups found";

/// The number of groups between single colons; none in an empty text.
std::ptrdiff_t groupCount(std::string_view text) {
  return text.empty() ? 0 : std::ranges::count(text, ':') + 1;
}

/// Where "::" stands first; npos without one.
std::size_t findElision(std::string_view text) {
  const auto both = [](char a, char b) { return a == ':' && b == ':'; };
  const auto found = std::ranges::adjacent_find(text, both);
  return found == text.end() ? std::string_view::npos
                             : static_cast<std::size_t>(found - text.begin());
}

}  // namespace

IPv6::IPv6(std::string_view address, int groups) : SubnetAddress(address, kWidth, groups) {
  const auto rest = takeSubnet(address);
  if (!rest) {
    return;
  }
  const std::size_t zone = findIPv6Zone(*rest);
  zone_ = rest->substr(zone);
  addressMinusSuffix_ = rest->substr(0, zone);
  parse(addressMinusSuffix_);
}

std::optional<std::string_view> IPv6::takeSubnet(std::string_view address) {
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
  resetParsed();
  v4_ = false;
  elidedGroups_ = elisionBegin_ = elisionEnd_ = 0;
  std::optional<std::string> rewritten;
  if (address.find('.') != std::string_view::npos) {
    rewritten = parsev4inv6(address);
    if (!rewritten) {
      return;
    }
    address = *rewritten;
  }
  if (!isPlainIPv6(address)) {
    std::string error = badCharactersError(address);
    if (error.empty()) {
      error = malformedGroupsError(address);
    }
    if (!error.empty()) {
      return fail(std::move(error));
    }
  }
  parseGroups(address);
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

void IPv6::parseGroups(std::string_view address) {
  const std::size_t gap = findElision(address);
  const bool elided = gap != std::string_view::npos;
  const std::string_view before = address.substr(0, gap);
  const std::string_view after = elided ? address.substr(gap + 2) : std::string_view();
  if (findElision(after) != std::string_view::npos) {
    return fail("Too many :: groups found");
  }
  const std::ptrdiff_t missing = groups() - groupCount(before) - groupCount(after);
  if (elided && missing == 0) {
    return fail("Error parsing groups");
  }
  if (groups() < 1 || groups() > kGroups || (elided ? missing < 0 : missing != 0)) {
    return fail(std::string(kWrongGroupCount));
  }
  parsedAddress_.reserve(kGroups);
  const bool readBefore = appendGroups(before);
  parsedAddress_.resize(parsedAddress_.size() + static_cast<std::size_t>(missing), "0");
  if (!readBefore || !appendGroups(after) || std::ssize(parsedAddress_) != groups()) {
    parsedAddress_.clear();
    return fail(std::string(kWrongGroupCount));
  }
  elidedGroups_ = static_cast<int>(missing);
  elisionBegin_ = elided ? static_cast<int>(groupCount(before)) : 0;
  elisionEnd_ = elisionBegin_ + elidedGroups_;
  valid_ = true;
}

bool IPv6::appendGroups(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::string& group = parsedAddress_.emplace_back();
    for (; i < text.size() && text[i] != ':'; ++i) {
      if (!isHexDigit(text[i])) {
        return false;
      }
      if (text[i] != '0' || !group.empty()) {
        group.push_back(static_cast<char>(text[i] | 0x20));  // lower case
      }
    }
    if (group.empty()) {
      group.push_back('0');
    }
  }
  return true;
}

}  // namespace quillet
