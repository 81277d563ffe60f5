#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <optional>

#include "netaddr/BigInt.h"
#include "netaddr/Magnitude.h"
#include "netaddr/NamedException.h"

namespace quillet {
namespace {

using words::DoubleLimb;
using words::Limb;

constexpr std::string_view kDigits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

/// As many digits as one limb holds are read or written in one step over the number.
struct Chunk {
  std::size_t digits = 1;
  Limb power;  // the radix to the power of `digits`

  explicit Chunk(Limb radix) : power(radix) {
    while (DoubleLimb{power} * radix <= std::numeric_limits<Limb>::max()) {
      power *= radix;
      ++digits;
    }
  }
};

std::optional<Limb> digitValue(char c) {
  if (c >= '0' && c <= '9') {
    return static_cast<Limb>(c - '0');
  }
  if (c >= 'A' && c <= 'Z') {
    return static_cast<Limb>(c - 'A' + 10);
  }
  if (c >= 'a' && c <= 'z') {
    return static_cast<Limb>(c - 'a' + 10);
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
std::optional<words::View> readDigits(words::Buffer room, std::string_view digits, Limb radix) {
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  if (digits.size() > BigInt::kBits) {
    return std::nullopt;
  }
  const Chunk chunk(std::max<Limb>(radix, 2));
  std::size_t used = 0;
  while (!digits.empty()) {
    // The first chunk takes what is left over, so that all others are whole.
    const std::size_t count = (digits.size() - 1) % chunk.digits + 1;
    Limb value = 0;
    for (const char c : digits.substr(0, count)) {
      value = value * radix + *digitValue(c);
    }
    digits.remove_prefix(count);
    const Limb carry = words::multiplyAdd(room.first(used), chunk.power, value);
    if (carry != 0 && used == room.size()) {
      return std::nullopt;
    }
    if (carry != 0) {
      room[used++] = carry;
    }
  }
  return room.first(used);
}

/// The digits of a number, which are put together from the last one on.
class Digits {
 public:
  /// Digits of so many bits each.
  void addBits(words::View number, int width) {
    const int length = words::bitLength(number);
    char* digit = digits_.data() + begin_;
    for (int at = 0; at < length; at += width) {
      *--digit = kDigits[words::digitAt(number, at, width)];
    }
    begin_ = static_cast<std::size_t>(digit - digits_.data());
  }

  void addChunks(words::View number, Limb radix) {
    const Chunk chunk(radix);
    const words::LimbDivisor power(chunk.power);
    std::array<Limb, BigInt::kLimbs> room;
    std::ranges::copy(number, room.begin());
    for (words::View rest = words::View(room).first(number.size()); !rest.empty();) {
      addChunk(chunk, power, words::divideByLimb(room, rest, power), radix);
      rest = words::trimmed(rest);
    }
  }

  /// The text without zeros in front, but for the last digit.
  [[nodiscard]] std::string text(bool negative) {
    while (begin_ < kSize && digits_[begin_] == '0') {
      ++begin_;
    }
    if (begin_ == kSize) {
      digits_[--begin_] = '0';
    }
    if (negative) {
      digits_[--begin_] = '-';
    }
    return {digits_.data() + begin_, kSize - begin_};
  }

 private:
  // All bits, what the last chunk has too much, and a sign.
  static constexpr std::size_t kSize = BigInt::kBits + words::kLimbBits + 1;

  /// As a fraction of the chunk's power, a number gives its digits from the first one on: each is
  /// what a multiplication by the radix carries out. The fraction is rounded up, by less than one
  /// of the last digit.
  void addChunk(const Chunk& chunk, const words::LimbDivisor& power, Limb number, Limb radix) {
    Limb rest = number << power.shift();
    Limb fraction = power.divide(rest, 0) + 1;
    begin_ -= chunk.digits;
    for (std::size_t i = begin_; i < begin_ + chunk.digits; ++i) {
      const DoubleLimb product = DoubleLimb{fraction} * radix;
      digits_[i] = kDigits[static_cast<Limb>(product >> words::kLimbBits)];
      fraction = static_cast<Limb>(product);
    }
  }

  std::array<char, kSize> digits_;
  std::size_t begin_ = kSize;
};

}  // namespace

BigInt::BigInt(std::string_view text, int radix) {
  const bool negativeText = text.starts_with('-');
  const std::string_view digits = text.substr(negativeText ? 1 : 0);
  requireDigits(digits, radix);
  std::array<Limb, kLimbs> room;
  const auto number = readDigits(room, digits, static_cast<Limb>(radix));
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
  const auto base = static_cast<Limb>(radix);
  Digits digits;
  if (std::has_single_bit(base)) {
    digits.addBits(magnitude.words(), std::countr_zero(base));
  } else {
    digits.addChunks(magnitude.words(), base);
  }
  return digits.text(magnitude.negative());
}

}  // namespace quillet
