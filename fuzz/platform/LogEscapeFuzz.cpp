// The result is one line of valid UTF-8 without control characters, as a decoder of its own sees
// it, and differs from a text that is so already in nothing.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/foundation/LogEscape.h"

namespace {

/// Takes one code point off the front of `text`; -1 when there is none.
std::int32_t takeCodePoint(std::string_view& text) {
  const auto first = static_cast<unsigned char>(text.front());
  const std::size_t length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (text.size() < length || (first >= 0x80 && first < 0xC0) || first >= 0xF8) {
    return -1;
  }
  std::int32_t point = length == 1 ? first : first & (0x7F >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0) != 0x80) {
      return -1;
    }
    point = point << 6 | (byte & 0x3F);
  }
  constexpr std::int32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  text.remove_prefix(length);
  const bool isSurrogate = point >= 0xD800 && point <= 0xDFFF;
  return point < kLeast[length] || isSurrogate || point > 0x10FFFF ? -1 : point;
}

bool isFitForALine(std::string_view text) {
  while (!text.empty()) {
    const std::int32_t point = takeCodePoint(text);
    if (point < 0x20 || (point >= 0x7F && point < 0xA0)) {
      return false;
    }
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  std::string out;
  platform::appendEscaped(out, text);
  if (!isFitForALine(out) || isFitForALine(text) != (out == text) || out.size() > 4 * size) {
    std::abort();
  }
  return 0;
}
