#include "netaddr/IPv6Syntax.h"

#include <algorithm>

#include "platform/base/Utf8.h"

namespace quillet {
namespace {

constexpr std::size_t kMaxDigits = 4;  // of a group
constexpr unsigned kNoDigit = 16;

bool isDecimalDigit(char c) { return c >= '0' && c <= '9'; }
bool isColon(char c) { return c == ':'; }

/// The value of a hexadecimal digit of either case; `kNoDigit` of anything else.
unsigned digitValue(char c) {
  const auto octet = static_cast<unsigned char>(c);
  const unsigned decimal = octet - unsigned{'0'};
  const unsigned letter = (octet | 0x20U) - unsigned{'a'};
  if (decimal < 10) {
    return decimal;
  }
  return letter < 6 ? letter + 10 : kNoDigit;
}

bool isHexDigit(char c) { return digitValue(c) != kNoDigit; }

/// The length of the run of such characters at the text's front.
template <class Predicate>
std::size_t runLength(std::string_view text, Predicate predicate) {
  return static_cast<std::size_t>(std::ranges::find_if_not(text, predicate) - text.begin());
}

/// Takes one group from the text's front; absent when it begins with none.
std::optional<std::uint16_t> takeGroup(std::string_view& text) {
  unsigned value = 0;
  std::size_t length = 0;
  for (; length < std::min(text.size(), kMaxDigits) && isHexDigit(text[length]); ++length) {
    value = value << 4 | digitValue(text[length]);
  }
  text.remove_prefix(length);
  return length > 0 ? std::optional(static_cast<std::uint16_t>(value)) : std::nullopt;
}

/// Takes what stands between two groups from the text's front; false when it begins otherwise.
bool takeColons(std::string_view& text, IPv6Groups& groups) {
  if (text.starts_with("::") && !groups.elision) {
    groups.elision = groups.count;
    text.remove_prefix(2);
    return true;
  }
  const bool isFirst = groups.count == 0;
  const bool begins = text.starts_with(':');
  text.remove_prefix(begins && !isFirst ? 1 : 0);
  return begins != isFirst;
}

}  // namespace

IPv6Prefix findIPv6Prefix(std::string_view text) {
  for (std::size_t slash = text.find('/'); slash < text.size(); slash = text.find('/', slash + 1)) {
    const std::string_view rest = text.substr(slash + 1);
    const std::size_t digits = runLength(rest.substr(0, 4), isDecimalDigit);
    const bool ends = digits == rest.size() || rest[digits] == '%';
    if (digits >= 1 && digits <= 3 && ends) {
      return {slash, rest.substr(0, digits)};
    }
  }
  return {text.size(), {}};
}

std::size_t findIPv6Zone(std::string_view text) {
  if (text.find('%') == std::string_view::npos) {
    return text.size();
  }
  const std::size_t line = text.find_last_of("\r\n") + 1;  // 0 without a line break
  return std::min(text.find('%', line), text.size());
}

std::optional<IPv6Groups> readIPv6Groups(std::string_view text) {
  IPv6Groups groups;
  do {
    if (!takeColons(text, groups)) {
      return std::nullopt;
    }
    if (text.empty() && groups.elision == groups.count) {
      break;
    }
    const auto group = takeGroup(text);
    if (!group || groups.count == groups.values.size()) {
      return std::nullopt;
    }
    groups.values[groups.count++] = *group;
  } while (!text.empty());
  return groups;
}

namespace {

/// The length of the malformed part that begins at a position; 0 for none there.
std::size_t malformedLength(std::string_view text, std::size_t position) {
  const std::string_view rest = text.substr(position);
  if (const std::size_t digits = runLength(rest, isHexDigit); digits > 4) {
    return digits;
  }
  if (const std::size_t colons = runLength(rest, isColon); colons > 2) {
    return colons;
  }
  const bool atEnd = rest.size() == 2 && rest[0] != ':' && rest[1] == ':';
  const bool atBegin = position == 0 && rest.size() >= 2 && rest[0] == ':' && rest[1] != ':';
  if (atEnd || atBegin) {
    return 2;
  }
  return rest == "/" ? 1 : 0;
}

/// "Bad character..." for what is neither a hexadecimal digit nor one of ":/%"; empty when all is
/// well. A character is one of UTF-8, or a byte that is part of none.
std::string badCharactersError(std::string_view text) {
  std::string bad;
  std::size_t count = 0;
  while (!text.empty()) {
    if (isHexDigit(text[0]) || text[0] == ':' || text[0] == '/' || text[0] == '%') {
      text.remove_prefix(1);
      continue;
    }
    const std::size_t length = std::max<std::size_t>(platform::utf8SequenceLength(text), 1);
    bad.append(text.substr(0, length));
    text.remove_prefix(length);
    ++count;
  }
  if (count == 0) {
    return {};
  }
  return std::string("Bad character")
      .append(count > 1 ? "s" : "")
      .append(" detected in address: ")
      .append(bad);
}

/// "Address failed regex: ..." for groups of more than four digits, runs of more than two colons,
/// and a single colon or a slash at an end; empty when all is well.
std::string malformedGroupsError(std::string_view text) {
  std::string error;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = malformedLength(text, i);
    if (length > 0) {
      error.append(error.empty() ? "Address failed regex: " : " ").append(text.substr(i, length));
    }
    i += std::max<std::size_t>(length, 1);
  }
  return error;
}

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

/// For groups that are well formed, each for itself.
std::string groupCountError(std::string_view text, int groups) {
  const std::size_t gap = findElision(text);
  const bool elided = gap != std::string_view::npos;
  const std::string_view after = elided ? text.substr(gap + 2) : std::string_view();
  if (findElision(after) != std::string_view::npos) {
    return "Too many :: groups found";
  }
  const bool isFull = groupCount(text.substr(0, gap)) + groupCount(after) == groups;
  return elided && isFull ? "Error parsing groups" : "Incorrect number of groups found";
}

}  // namespace

std::string ipv6Error(std::string_view text, int groups) {
  std::string error = badCharactersError(text);
  if (error.empty()) {
    error = malformedGroupsError(text);
  }
  return error.empty() ? groupCountError(text, groups) : error;
}

}  // namespace quillet
