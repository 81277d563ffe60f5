#include "platform/base/Description.h"

#include <algorithm>
#include <cmath>

namespace platform::detail {

void describeFloating(std::string& out, double value) {
  const double size = std::fabs(value);
  const bool plain = std::isfinite(value) && (size == 0 || (size >= 1e-4 && size < 1e16));
  char digits[64];
  const auto result =
      plain ? std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed)
            : std::to_chars(digits, digits + sizeof digits, value, std::chars_format::scientific);
  const std::string_view text(digits, static_cast<std::size_t>(result.ptr - digits));
  out.append(text);
  if (plain && text.find('.') == std::string_view::npos) {
    out.append(".0");
  }
}

namespace {

bool needsEscape(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F || c == '"' || c == '\\';
}

void appendCharacterEscape(std::string& out, char c) {
  constexpr char kHex[] = "0123456789ABCDEF";
  constexpr std::string_view kCharacters("\"\\\n\r\t\0", 6);
  constexpr std::string_view kEscapes = "\"\\nrt0";
  if (const auto found = kCharacters.find(c); found != std::string_view::npos) {
    out.push_back('\\');
    out.push_back(kEscapes[found]);
    return;
  }
  const auto byte = static_cast<unsigned char>(c);
  out.append("\\u{");
  out.push_back(kHex[byte >> 4]);
  out.push_back(kHex[byte & 0xF]);
  out.push_back('}');
}

}  // namespace

void describeQuoted(std::string& out, std::string_view text) {
  out.push_back('"');
  while (true) {
    const auto* const special = std::find_if(text.begin(), text.end(), needsEscape);
    const auto plain = static_cast<std::size_t>(special - text.begin());
    out.append(text.substr(0, plain));
    if (plain == text.size()) {
      break;
    }
    appendCharacterEscape(out, *special);
    text.remove_prefix(plain + 1);
  }
  out.push_back('"');
}

}  // namespace platform::detail
