// One byte for the radix, then two numbers as text with a line feed between them. What is read is
// written back as it was, but for leading zeros and letter case, and divided numbers are made whole
// again.

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/Require.h"
#include "netaddr/BigInt.h"
#include "netaddr/NamedException.h"

namespace quillet {
namespace {

using fuzz::require;

template <class Call>
std::optional<BigInt> unlessThrown(Call call) {
  try {
    return call();
  } catch (const NamedException&) {
    return std::nullopt;
  }
}

std::string normalized(std::string_view text) {
  std::string digits(text.starts_with('-') ? "-" : "");
  text.remove_prefix(digits.size());
  digits.append(text.substr(std::min(text.find_first_not_of('0'), text.size() - 1)));
  std::ranges::transform(digits, digits.begin(),
                         [](char c) { return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c; });
  return digits;
}

std::optional<BigInt> readBack(std::string_view text, int radix) {
  const auto value = unlessThrown([&] { return BigInt(text, radix); });
  if (value && radix >= 2 && radix <= 36) {
    const std::string written = value->toStringWithRadix(radix);
    require(written == normalized(text));
    require(BigInt(written, radix) == *value);
  }
  return value;
}

void calculate(const BigInt& a, const BigInt& b) {
  require(a.mod(b).equals(a) || !b.equals(BigInt()));
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
  require(a.xOr(b) == a.bitOr(b).subtract(a.bitAnd(b)));
  const int shift = b.intValue();
  require(shift < 0 || shift > 31 || a.bitCount() > 2200 ||
          a.shiftLeft(shift).shiftRight(shift) == a);
}

}  // namespace
}  // namespace quillet

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  const int radix = data[0] < 128 ? int{data[0]} : -int{data[0]};
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::size_t line = std::min(text.find('\n'), text.size());
  const auto first = quillet::readBack(text.substr(0, line), radix);
  const auto second = quillet::readBack(text.substr(std::min(line + 1, text.size())), radix);
  if (first && second) {
    quillet::calculate(*first, *second);
  }
  return 0;
}
