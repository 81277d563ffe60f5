#include "netaddr/IPv6Syntax.h"

#include <algorithm>

#include "platform/base/Utf8.h"

namespace quillet {
namespace {

bool isDecimalDigit(char c) { return c >= '0' && c <= '9'; }
bool isColon(char c) { return c == ':'; }

/// The length of the run of such characters at the text's front.
template <class Predicate>
std::size_t runLength(std::string_view text, Predicate predicate) {
  return static_cast<std::size_t>(std::ranges::find_if_not(text, predicate) - text.begin());
}

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

}  // namespace

bool isPlainIPv6(std::string_view text) {
  int digits = 0;
  int colons = 0;
  for (const char c : text) {
    colons = isColon(c) ? colons + 1 : 0;
    digits = isHexDigit(c) ? digits + 1 : 0;
    if (colons + digits == 0 || colons > 2 || digits > 4) {
      return false;
    }
  }
  return colons != 1 && (text.size() < 2 || text[0] != ':' || text[1] == ':');
}

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

}  // namespace quillet
