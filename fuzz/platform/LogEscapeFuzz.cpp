// The result is one line of valid UTF-8 without control characters, as another decoder sees it, and
// differs from a text that is so already in nothing.

#include <clocale>
#include <cwchar>
#include <string>
#include <string_view>

#include "fuzz/Require.h"
#include "platform/log/LogEscape.h"

namespace {

using quillet::fuzz::require;

/// By the C library's decoder, and what it leaves to others: surrogates and the end of Unicode.
bool isFitForALine(std::string_view text) {
  static const bool hasDecoder = std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr;
  require(hasDecoder);
  while (!text.empty()) {
    wchar_t point = 0;
    std::mbstate_t state{};
    const std::size_t length = std::mbrtowc(&point, text.data(), text.size(), &state);
    const bool isSurrogate = point >= 0xD800 && point <= 0xDFFF;
    if (length > text.size() || point < 0x20 || (point >= 0x7F && point < 0xA0) || isSurrogate ||
        point > 0x10FFFF) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  std::string out;
  platform::appendEscaped(out, text);
  require(isFitForALine(out));
  require(isFitForALine(text) == (out == text));
  require(out.size() <= 4 * size);
  return 0;
}
