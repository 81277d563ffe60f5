// One byte for the radix, then two numbers as text with a line feed between them. What is read is
// written back as it was, but for leading zeros and letter case, and divided numbers are made whole
// again.

#include <algorithm>
#include <optional>
#include <string>

#include "fuzz/Target.h"
#include "netaddr/BigInt.h"
#include "netaddr/NamedException.h"

namespace {

using quillet::BigInt;
using quillet::fuzz::require;

template <class Call>
std::optional<BigInt> unlessThrown(Call call) {
  try {
    return call();
  } catch (const quillet::NamedException&) {
    return std::nullopt;
  }
}

std::optional<BigInt> readBack(std::string_view text, int radix) {
  const auto value = unlessThrown([&] { return BigInt(text, radix); });
  if (value && radix >= 2 && radix <= 36) {
    std::string expected(text.starts_with('-') ? "-" : "");
    text.remove_prefix(expected.size());
    for (const char c : text.substr(std::min(text.find_first_not_of('0'), text.size() - 1))) {
      expected.push_back(c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c);
    }
    require(value->toStringWithRadix(radix) == expected && BigInt(expected, radix) == *value);
  }
  return value;
}

void calculate(const BigInt& a, const BigInt& b) {
  if (const auto quotient = unlessThrown([&] { return a.divide(b); })) {
    require(quotient->multiply(b).add(a.mod(b)) == a);
  }
  if (const auto sum = unlessThrown([&] { return a.add(b); })) {
    require(sum->subtract(b) == a);
  }
  const BigInt root = a.sqrt();
  require(root.multiply(root).lessThanOrEqualTo(a) || a.lessThan(BigInt()));
  if (const auto divisor = unlessThrown([&] { return a.gcd(b); })) {
    require(a.mod(*divisor) == BigInt() || divisor->equals(BigInt()));
  }
}

}  // namespace

void quillet::fuzz::run(platform::DataView input) {
  if (input.empty()) {
    return;
  }
  const auto text = platform::textOf(input.subspan(1));
  const std::size_t line = std::min(text.find('\n'), text.size());
  const int radix = static_cast<std::int8_t>(input[0]);
  const auto first = readBack(text.substr(0, line), radix);
  const auto second = readBack(text.substr(std::min(line + 1, text.size())), radix);
  if (first && second) {
    calculate(*first, *second);
  }
}
