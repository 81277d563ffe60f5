// One byte for the radix, then numbers as text with line feeds between them. What is read is
// written back as it was, but for leading zeros and letter case.

#include <algorithm>
#include <string>

#include "fuzz/Target.h"
#include "netaddr/BigInt.h"
#include "netaddr/NamedException.h"

namespace quillet::fuzz {

void readBack(std::string_view text, int radix) try {
  const BigInt value(text, radix);
  if (radix < 2 || radix > 36) {
    return;
  }
  std::string expected(text.starts_with('-') ? "-" : "");
  text.remove_prefix(expected.size());
  for (const char c : text.substr(std::min(text.find_first_not_of('0'), text.size() - 1))) {
    expected.push_back(c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c);
  }
  require(value.toStringWithRadix(radix) == expected);
  require(BigInt(expected, radix) == value);
} catch (const NamedException&) {
  // Refused as it should be: no number, or one out of range.
}

void run(platform::DataView input) {
  if (input.empty()) {
    return;
  }
  auto text = platform::textOf(input.subspan(1));
  while (!text.empty()) {
    const auto line = text.substr(0, text.find('\n'));
    readBack(line, static_cast<std::int8_t>(input[0]));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
  }
}

}  // namespace quillet::fuzz
