#include "netaddr/PaddedText.h"

#include <array>
#include <charconv>

namespace quillet {
namespace {

void appendNumber(std::string& out, std::uint64_t number, int radix, std::size_t digits) {
  std::array<char, 20> text;
  const char* end = std::to_chars(text.begin(), text.end(), number, radix).ptr;
  const auto length = static_cast<std::size_t>(end - text.begin());
  out.append(digits > length ? digits - length : 0, '0');
  out.append(text.begin(), length);
}

}  // namespace

std::string stringByPaddingLeftToLength(std::string_view text, std::size_t length,
                                        std::string_view pad) {
  const std::size_t missing = pad.empty() || text.size() >= length ? 0 : length - text.size();
  std::string padded;
  padded.reserve(missing + text.size());
  while (padded.size() < missing) {
    padded.append(pad.substr(0, missing - padded.size()));
  }
  return padded.append(text);
}

void appendDecimal(std::string& out, std::uint64_t number, std::size_t digits) {
  appendNumber(out, number, 10, digits);
}

void appendHexadecimal(std::string& out, std::uint64_t number, std::size_t digits) {
  appendNumber(out, number, 16, digits);
}

}  // namespace quillet
