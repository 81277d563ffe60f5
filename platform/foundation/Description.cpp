#include "platform/foundation/Description.h"

#include <cmath>

namespace platform::detail {

void describeFloating(std::string& out, double value) {
  const double size = std::fabs(value);
  const bool plain = std::isfinite(value) && (size == 0 || (size >= 1e-4 && size < 1e16));
  char digits[64];
  const auto result = plain
                          ? std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed)
                          : std::to_chars(digits, digits + sizeof digits, value);
  const std::string_view text(digits, static_cast<std::size_t>(result.ptr - digits));
  out.append(text);
  if (plain && text.find('.') == std::string_view::npos) {
    out.append(".0");
  }
}

void describeQuoted(std::string& out, std::string_view text) {
  constexpr char kHex[] = "0123456789ABCDEF";
  out.push_back('"');
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    switch (c) {
      case '"':
        out.append("\\\"");
        break;
      case '\\':
        out.append("\\\\");
        break;
      case '\n':
        out.append("\\n");
        break;
      case '\r':
        out.append("\\r");
        break;
      case '\t':
        out.append("\\t");
        break;
      case '\0':
        out.append("\\0");
        break;
      default:
        if (byte < 0x20 || byte == 0x7F) {
          out.append("\\u{");
          out.push_back(kHex[byte >> 4]);
          out.push_back(kHex[byte & 0xF]);
          out.push_back('}');
        } else {
          out.push_back(c);
        }
    }
  }
  out.push_back('"');
}

}  // namespace platform::detail
