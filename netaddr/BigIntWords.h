#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// Unsigned numbers as runs of 64-bit limbs, the least significant first: the schoolbook steps of
/// which BigInt is made. Nothing here knows a sign or a capacity; the caller brings room for every
/// result.
namespace quillet::words {

using Limb = std::uint64_t;
__extension__ using DoubleLimb = unsigned __int128;
using View = std::span<const Limb>;
using Buffer = std::span<Limb>;

inline constexpr int kLimbBits = 64;

/// The limbs without zeros at the top: none for zero.
View trimmed(View limbs);

/// Less than, equal to or greater than 0 as a is below, equal to or above b; both trimmed, or of
/// one size.
int compare(View a, View b);

/// The position of the highest set bit plus one; trimmed.
int bitLength(View limbs);

/// The number that `width` bits from bit `position` up make; 0 past the end.
inline Limb digitAt(View limbs, int position, int width) {
  const auto index = static_cast<std::size_t>(position / kLimbBits);
  const int bit = position % kLimbBits;
  Limb digit = index < limbs.size() ? limbs[index] >> bit : 0;
  if (bit + width > kLimbBits && index + 1 < limbs.size()) {
    digit |= limbs[index + 1] << (kLimbBits - bit);
  }
  return digit & ((Limb{1} << width) - 1);
}

/// The number of zero bits below the lowest set bit; 0 for zero.
int trailingZeros(View limbs);

/// sum += addend, where the addend is no longer; the carry out of the sum's top limb.
Limb add(Buffer sum, View addend);

/// difference -= subtrahend, where the subtrahend is no longer; the borrow out of the top limb.
Limb subtract(Buffer difference, View subtrahend);

/// limbs = 2^(64 * size) - limbs.
void negate(Buffer limbs);

/// sum[0 .. a.size()) += a * factor; the carry out of that range.
Limb addProduct(Buffer sum, View a, Limb factor);

/// difference[0 .. a.size()) -= a * factor; the borrow out of that range.
Limb subtractProduct(Buffer difference, View a, Limb factor);

/// limbs = limbs * factor + addend; the carry out.
Limb multiplyAdd(Buffer limbs, Limb factor, Limb addend);

/// product = a * b; the product has a.size() + b.size() limbs and overlaps neither.
void multiply(Buffer product, View a, View b);

/// product = a * a, in about two thirds of the time.
void square(Buffer product, View a);

/// Shifts by any amount from 0 up within the buffer, of limbs or of words of 32 bits; bits leave at
/// its ends.
template <class Unit>
void shiftLeft(std::span<Unit> units, std::size_t bits);
template <class Unit>
void shiftRight(std::span<Unit> units, std::size_t bits);

/// A divisor of one limb that is not 0, which divides by two multiplications (Moeller and Granlund,
/// Improved division by invariant integers).
class LimbDivisor {
 public:
  explicit LimbDivisor(Limb divisor);

  /// The divisor is multiplied by 2^shift, so that its top bit is set.
  [[nodiscard]] int shift() const { return shift_; }
  [[nodiscard]] Limb shifted() const { return divisor_; }
  /// The quotient of high * 2^64 + low by the shifted divisor, where `high` is below it and gets
  /// the remainder.
  Limb divide(Limb& high, Limb low) const {
    const DoubleLimb estimate =
        DoubleLimb{reciprocal_} * high + ((DoubleLimb{high} << kLimbBits) | low);
    auto quotient = static_cast<Limb>(estimate >> kLimbBits) + 1;
    high = low - quotient * divisor_;
    if (high > static_cast<Limb>(estimate)) {
      --quotient;
      high += divisor_;
    }
    if (high >= divisor_) {
      ++quotient;
      high -= divisor_;
    }
    return quotient;
  }

 private:
  int shift_;
  Limb divisor_;
  Limb reciprocal_;  // (2^128 - 1) / divisor - 2^64
};

/// The quotient by such a divisor, as long as the dividend and maybe its own buffer; the
/// remainder.
Limb divideByLimb(Buffer quotient, View dividend, const LimbDivisor& divisor);

/// The remainder alone.
Limb remainderByLimb(View dividend, Limb divisor);

/// Division by a divisor that is trimmed and not zero. The quotient has dividend.size() -
/// divisor.size() + 1 limbs (0 when the divisor is longer), the remainder as many as the divisor;
/// neither overlaps an operand. The dividend has at most kLongestDividend limbs.
inline constexpr std::size_t kLongestDividend = 2 * 35 + 1;
void divide(Buffer quotient, Buffer remainder, View dividend, View divisor);

}  // namespace quillet::words
