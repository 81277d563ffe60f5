#include <algorithm>
#include <cctype>
#include <span>

#include "netaddr/IPv4.h"
#include "netaddr/IPv6.h"
#include "netaddr/PaddedText.h"

namespace quillet {
namespace {

constexpr std::size_t kBytes = 16;

constexpr std::size_t kMaxTextSize = 39;  // eight groups of four digits, and their colons

/// Appends the groups with a colon between each two.
void appendGroups(std::string& text, std::span<const std::uint16_t> groups) {
  for (const std::uint16_t& group : groups) {
    if (&group != groups.data()) {
      text.push_back(':');
    }
    appendHexadecimal(text, group);
  }
}

/// The longest run of two or more zeros, the first of equally long ones; empty when there is none.
IPv6::Slice longestZeroRun(std::span<const std::uint16_t> groups) {
  IPv6::Slice longest{0, 1};
  for (std::size_t begin = 0; begin < groups.size();) {
    std::size_t end = begin;
    while (end < groups.size() && groups[end] == 0) {
      ++end;
    }
    if (end - begin > longest.end - longest.begin) {
      longest = {begin, end};
    }
    begin = end + 1;
  }
  return longest.end - longest.begin > 1 ? longest : IPv6::Slice{};
}

}  // namespace

std::vector<std::string> IPv6::parsedAddress() const {
  std::vector<std::string> groups;
  groups.reserve(parsedCount_);
  for (const Group group : parsed()) {
    appendHexadecimal(groups.emplace_back(), group);
  }
  return groups;
}

std::vector<std::string> IPv6::compact(const std::vector<std::string>& groups, Slice slice) {
  const std::size_t end = std::min(slice.end, groups.size());
  const std::size_t begin = std::min(slice.begin, end);
  std::vector<std::string> compacted;
  compacted.reserve(begin + 1 + groups.size() - end);
  compacted.assign(groups.begin(), groups.begin() + static_cast<std::ptrdiff_t>(begin));
  compacted.emplace_back(kElision);
  compacted.insert(compacted.end(), groups.begin() + static_cast<std::ptrdiff_t>(end),
                   groups.end());
  return compacted;
}

std::optional<std::string> IPv6::correctForm() const {
  if (parsedCount_ == 0) {
    return std::nullopt;
  }
  const Slice run = longestZeroRun(parsed());
  std::string text;
  text.reserve(kMaxTextSize);
  appendGroups(text, parsed().first(run.begin));
  if (run.begin != run.end) {
    text.append("::");
  }
  appendGroups(text, parsed().subspan(run.end));
  return text;
}

std::string IPv6::canonicalForm() const {
  std::string text;
  for (const Group group : parsed()) {
    text.append(text.empty() ? "" : ":");
    appendHexadecimal(text, group, 4);
  }
  return text;
}

bool IPv6::canonical() const { return valid() && addressWithoutSubnet() == canonicalForm(); }

std::string IPv6::decimal() const {
  std::string text;
  for (const Group group : parsed()) {
    text.append(text.empty() ? "" : ":");
    appendDecimal(text, group, 5);
  }
  return text;
}

std::string IPv6::v4inv6() const {
  constexpr std::size_t groupsBeforeIPv4 = 6;
  if (parsedCount_ == 0) {
    return {};
  }
  const auto first = parsed().first(std::min(groupsBeforeIPv4, parsedCount_));
  std::string text;
  appendGroups(text, first);
  text = IPv6(text, static_cast<int>(first.size())).correctForm().value_or("");
  text.append(text.ends_with(':') ? "" : ":");
  return text.append(IPv4::fromBigInteger(bigInteger()).correctForm().value_or(""));
}

std::string IPv6::reversedForm() const {
  std::string digits = canonicalForm();
  if (digits.empty()) {
    return digits;
  }
  std::erase(digits, ':');
  digits.resize(std::min(digits.size(), static_cast<std::size_t>(subnetMask() / 4)));
  std::string text;
  std::for_each(digits.rbegin(), digits.rend(), [&](char c) { text.append(1, c).push_back('.'); });
  return text.append("ip6.arpa.");
}

BigInt IPv6::bigInteger() const {
  std::string digits = canonicalForm();
  std::erase(digits, ':');
  return digits.empty() ? BigInt() : BigInt(digits, 16);
}

platform::Data IPv6::data() const {
  platform::Data bytes(kBytes);
  std::size_t at = kBytes - 2 * parsedCount_;
  for (const Group group : parsed()) {
    bytes[at++] = static_cast<std::uint8_t>(group >> 8);
    bytes[at++] = static_cast<std::uint8_t>(group);
  }
  return bytes;
}

std::string IPv6::bitsBase16WithStart(int start, int end) const {
  const std::string bits = bitsBase2WithStart(start, end);
  if (bits.empty()) {
    return {};
  }
  std::string digits = BigInt(bits, 2).toStringWithRadix(16);
  std::ranges::transform(digits, digits.begin(), [](char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  });
  return stringByPaddingLeftToLength(digits, (bits.size() + 3) / 4, "0");
}

IPv6 IPv6::fromBigInteger(const BigInt& value) {
  std::string text;
  for (std::size_t word = kBytes / sizeof(BigInt::Word); word-- > 0;) {
    const BigInt::Word two = value.getDataAtIndex(word);
    text.append(text.empty() ? "" : ":");
    appendHexadecimal(text, two >> 16, 4);
    text.push_back(':');
    appendHexadecimal(text, two & 0xFFFF, 4);
  }
  return IPv6(text);
}

}  // namespace quillet
