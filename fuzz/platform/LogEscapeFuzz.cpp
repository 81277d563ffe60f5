// The result is one line of valid UTF-8 without control characters, as another decoder sees it, and
// differs from a text that is so already in nothing.

#include <clocale>
#include <cwchar>
#include <string>

#include "fuzz/Target.h"
#include "platform/log/LogEscape.h"

namespace quillet::fuzz {

/// By the C library's decoder, and what it leaves to others: surrogates and the end of Unicode.
bool isFitForALine(std::string_view text) {
  static const bool hasDecoder = std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr;
  require(hasDecoder);
  while (!text.empty()) {
    wchar_t point = 0;
    std::mbstate_t state{};
    const std::size_t length = std::mbrtowc(&point, text.data(), text.size(), &state);
    if (length > text.size() || point < 0x20 || (point >= 0x7F && point < 0xA0) ||
        (point >= 0xD800 && point <= 0xDFFF) || point > 0x10FFFF) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

void run(platform::DataView input) {
  const auto text = platform::textOf(input);
  std::string out;
  platform::appendEscaped(out, text);
  require(isFitForALine(out) && isFitForALine(text) == (out == text));
  require(out.size() <= 4 * text.size());
}

}  // namespace quillet::fuzz
