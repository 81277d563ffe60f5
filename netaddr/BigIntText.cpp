#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include "netaddr/BigInt.h"
#include "netaddr/Magnitude.h"
#include "netaddr/NamedException.h"

namespace quillet {
namespace {

using words::DoubleWord;
using words::Word;

constexpr std::string_view kDigits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

/// As many digits as one word holds are read or written in one step over the number.
struct Chunk {
  std::size_t digits = 1;
  Word power;  // the radix to the power of `digits`

  explicit Chunk(Word radix) : power(radix) {
    while (DoubleWord{power} * radix <= std::numeric_limits<Word>::max()) {
      power *= radix;
      ++digits;
    }
  }
};

std::optional<Word> digitValue(char c) {
  if (c >= '0' && c <= '9') {
    return static_cast<Word>(c - '0');
  }
  if (c >= 'A' && c <= 'Z') {
    return static_cast<Word>(c - 'A' + 10);
  }
  if (c >= 'a' && c <= 'z') {
    return static_cast<Word>(c - 'a' + 10);
  }
  return std::nullopt;
}

void requireDigits(std::string_view text, int radix) {
  const auto isDigit = [radix](char c) {
    const auto value = digitValue(c);
    return value && static_cast<int>(*value) < radix;
  };
  if (text.empty() || !std::ranges::all_of(text, isDigit)) {
    throw NamedException("ArithmeticException", "Invalid string in constructor.");
  }
}

/// The number that the digits make, without zeros at the top; nothing when it is longer than the
/// room given. More digits than there are bits are refused unread, so that long texts cost no more
/// than one look.
std::optional<words::View> readDigits(words::Buffer room, std::string_view digits, Word radix) {
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  if (digits.size() > BigInt::kBits) {
    return std::nullopt;
  }
  const Chunk chunk(std::max<Word>(radix, 2));
  std::size_t used = 0;
  while (!digits.empty()) {
    // The first chunk takes what is left over, so that all others are whole.
    const std::size_t count = (digits.size() - 1) % chunk.digits + 1;
    Word value = 0;
    for (const char c : digits.substr(0, count)) {
      value = value * radix + *digitValue(c);
    }
    digits.remove_prefix(count);
    const Word carry = words::multiplyAdd(room.first(used), chunk.power, value);
    if (carry != 0 && used == room.size()) {
      return std::nullopt;
    }
    if (carry != 0) {
      room[used++] = carry;
    }
  }
  return room.first(used);
}

}  // namespace

BigInt::BigInt(std::string_view text, int radix) {
  const bool negativeText = text.starts_with('-');
  const std::string_view digits = text.substr(negativeText ? 1 : 0);
  requireDigits(digits, radix);
  std::array<Word, kWords> room;
  const auto number = readDigits(room, digits, static_cast<Word>(radix));
  const bool lostSign = negativeText && number && number->empty();
  if (!number || lostSign || !Magnitude::fits(*number, negativeText)) {
    throw NamedException("ArithmeticException", negativeText ? "Negative underflow in constructor."
                                                             : "Positive overflow in constructor.");
  }
  *this = Magnitude::toBigInt(*number, negativeText);
}

std::string BigInt::toStringWithRadix(int radix) const {
  if (radix < 2 || radix > 36) {
    throw NamedException("ArgumentException", "Radix must be >= 2 and <= 36");
  }
  const Magnitude magnitude(*this);
  std::array<Word, kWords> room;
  std::ranges::copy(magnitude.words(), room.begin());
  const auto base = static_cast<Word>(radix);
  const Chunk chunk(base);
  std::string reversed;
  for (words::View rest = words::View(room).first(magnitude.words().size()); !rest.empty();) {
    Word digits = words::divideByWord(room, rest, chunk.power);
    rest = words::trimmed(rest);
    for (std::size_t i = 0; rest.empty() ? digits != 0 : i < chunk.digits; ++i) {
      reversed.push_back(kDigits[digits % base]);
      digits /= base;
    }
  }
  if (reversed.empty()) {
    reversed.push_back('0');
  }
  if (magnitude.negative()) {
    reversed.push_back('-');
  }
  return {reversed.rbegin(), reversed.rend()};
}

}  // namespace quillet
