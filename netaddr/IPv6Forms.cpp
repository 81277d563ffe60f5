#include <algorithm>
#include <cctype>
#include <charconv>

#include "netaddr/IPv4.h"
#include "netaddr/IPv6.h"
#include "netaddr/PaddedText.h"

namespace quillet {
namespace {

constexpr std::size_t kBytes = 16;

std::string joinedByColons(const std::vector<std::string>& groups) {
  std::string text;
  for (const std::string& group : groups) {
    text.append(text.empty() && &group == &groups.front() ? "" : ":").append(group);
  }
  return text;
}

/// The longest run of two or more zeros, the first of equally long ones; empty when there is none.
IPv6::Slice longestZeroRun(const std::vector<std::string>& groups) {
  IPv6::Slice longest{0, 1};
  for (std::size_t begin = 0; begin < groups.size();) {
    std::size_t end = begin;
    while (end < groups.size() && groups[end] == "0") {
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

std::uint64_t IPv6::group(std::size_t index) const {
  const std::string& text = parsedAddress_[index];
  std::uint64_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value, 16);
  return value;
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
  if (parsedAddress_.empty()) {
    return std::nullopt;
  }
  const Slice run = longestZeroRun(parsedAddress_);
  if (run.begin == run.end) {
    return joinedByColons(parsedAddress_);
  }
  std::vector<std::string> groups = compact(parsedAddress_, run);
  // At an end, where only one colon joins it to the groups, the elision brings the other itself.
  std::string& elision = groups[run.begin];
  elision.append(run.begin == 0 ? ":" : "").append(run.end == parsedAddress_.size() ? ":" : "");
  return joinedByColons(groups);
}

std::string IPv6::canonicalForm() const {
  std::string text;
  for (std::size_t i = 0; i < parsedAddress_.size(); ++i) {
    text.append(i == 0 ? "" : ":");
    appendHexadecimal(text, group(i), 4);
  }
  return text;
}

bool IPv6::canonical() const { return valid() && addressMinusSuffix_ == canonicalForm(); }

std::string IPv6::decimal() const {
  std::string text;
  for (std::size_t i = 0; i < parsedAddress_.size(); ++i) {
    text.append(i == 0 ? "" : ":");
    appendDecimal(text, group(i), 5);
  }
  return text;
}

std::string IPv6::v4inv6() const {
  constexpr std::ptrdiff_t groupsBeforeIPv4 = 6;
  if (parsedAddress_.empty()) {
    return {};
  }
  const auto first = parsedAddress_.begin();
  const auto last = first + std::min(groupsBeforeIPv4, std::ssize(parsedAddress_));
  const IPv6 front(joinedByColons({first, last}), static_cast<int>(last - first));
  std::string text = front.correctForm().value_or("");
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
  std::size_t at = kBytes - 2 * parsedAddress_.size();
  for (std::size_t i = 0; i < parsedAddress_.size(); ++i) {
    bytes[at++] = static_cast<std::uint8_t>(group(i) >> 8);
    bytes[at++] = static_cast<std::uint8_t>(group(i));
  }
  return bytes;
}

std::string IPv6::bitsBase16WithStart(int start, int end) const {
  const std::string bits = bitsBase2WithStart(start, end);
  if (bits.empty()) {
    return bits;
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
