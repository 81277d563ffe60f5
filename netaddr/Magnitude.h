#pragma once

#include <array>

#include "netaddr/BigInt.h"
#include "netaddr/BigIntWords.h"

namespace quillet {

/// The absolute value of a BigInt as unsigned words, and the way back. The most negative value,
/// whose absolute value no BigInt holds, has one here. Looks into the BigInt that it was made of
/// where it can, so it must not outlive it.
class Magnitude {
 public:
  explicit Magnitude(const BigInt& value);
  explicit Magnitude(BigInt&&) = delete;

  /// Trimmed: no words for zero.
  [[nodiscard]] words::View words() const {
    return negative_ ? words::View(negated_).first(size_) : positive_;
  }
  [[nodiscard]] bool negative() const { return negative_; }

  /// Whether there is a BigInt of that magnitude and sign.
  static bool fits(words::View words, bool negative);
  /// That BigInt. A magnitude that does not fit throws as `BigInt::negate` does: the callers'
  /// results are no longer than their operands, so that 2^2239 is the only such one.
  static BigInt toBigInt(words::View words, bool negative = false);

 private:
  words::View positive_;
  // Set for a negative value only.
  std::array<words::Limb, BigInt::kLimbs> negated_;
  std::size_t size_ = 0;
  bool negative_;
};

}  // namespace quillet
