#include "platform/store/JSONNumbers.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace platform {

namespace {

constexpr std::string_view kDigits = "0123456789";

/// Past the end of the string that begins at `begin`.
std::size_t endOfString(std::string_view text, std::size_t begin) {
  std::size_t i = begin + 1;
  while (i < text.size() && text[i] != '"') {
    i += text[i] == '\\' ? 2U : 1U;
  }
  return i + 1;
}

/// Takes digits off the front of `text`; false when there are none.
bool skipDigits(std::string_view& text) {
  const auto count = std::min(text.find_first_not_of(kDigits), text.size());
  text.remove_prefix(count);
  return count > 0;
}

bool skipOneOf(std::string_view characters, std::string_view& text) {
  const bool isThere = !text.empty() && characters.find(text.front()) != std::string_view::npos;
  text.remove_prefix(isThere ? 1 : 0);
  return isThere;
}

/// RFC 8259 section 6.
bool isNumber(std::string_view text) {
  skipOneOf("-", text);
  if (!skipOneOf("0", text) && !skipDigits(text)) {
    return false;
  }
  if (skipOneOf(".", text) && !skipDigits(text)) {
    return false;
  }
  if (skipOneOf("eE", text)) {
    skipOneOf("+-", text);
    return skipDigits(text) && text.empty();
  }
  return text.empty();
}

bool isBeyondDouble(std::string_view number) {
  constexpr std::size_t kShortest = 5;  // 1e309
  return number.size() >= kShortest && isNumber(number) &&
         std::isinf(std::strtod(std::string(number).c_str(), nullptr));
}

}  // namespace

std::vector<JSONNumber> findNumbersBeyondDouble(std::string_view text) {
  std::vector<JSONNumber> found;
  std::size_t count = 0;
  std::size_t i = 0;
  while ((i = text.find_first_of("\"-0123456789", i)) < text.size()) {
    if (text[i] == '"') {
      i = endOfString(text, i);
      continue;
    }
    const auto end = std::min(text.find_first_not_of("+-.eE0123456789", i), text.size());
    if (isBeyondDouble(text.substr(i, end - i))) {
      found.push_back({count, i, end - i});
    }
    ++count;
    i = end;
  }
  return found;
}

std::string withZeroFor(const std::vector<JSONNumber>& numbers, std::string_view text) {
  std::string result(text);
  for (const auto& number : numbers) {
    result.replace(number.offset, number.size, number.size, ' ');
    result[number.offset] = '0';
  }
  return result;
}

}  // namespace platform
