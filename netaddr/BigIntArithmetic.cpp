#include <algorithm>
#include <array>

#include "netaddr/BigInt.h"
#include "netaddr/Magnitude.h"
#include "netaddr/NamedException.h"

namespace quillet {

BigInt BigInt::add(const BigInt& other) const {
  // Limbs above those in use are 0 here, so that a sum needs one more than the longer operand at
  // most.
  const std::size_t used = std::min(std::max(limbsInUse(), other.limbsInUse()) + 1, kLimbs);
  BigInt sum = *this;
  words::add(words::Buffer(sum.limbs_).first(used), words::View(other.limbs_).first(used));
  if (negative() == other.negative() && sum.negative() != negative()) {
    throw NamedException("ArithmeticException", "Overflow");
  }
  sum.trim(used);
  return sum;
}

BigInt BigInt::subtract(const BigInt& other) const {
  BigInt difference = *this;
  words::subtract(difference.limbs_, words::View(other.limbs_).first(other.limbsInUse()));
  if (negative() != other.negative() && difference.negative() != negative()) {
    throw NamedException("ArithmeticException", "Overflow");
  }
  difference.trim(difference.negative() ? kLimbs : std::max(limbsInUse(), other.limbsInUse()));
  return difference;
}

BigInt BigInt::multiply(const BigInt& other) const {
  const Magnitude a(*this);
  const Magnitude b(other);
  std::array<words::Limb, 2 * kLimbs> productWords;
  const auto product = words::Buffer(productWords).first(a.words().size() + b.words().size());
  words::multiply(product, a.words(), b.words());
  const bool negativeProduct = a.negative() != b.negative();
  if (!Magnitude::fits(product, negativeProduct)) {
    const bool fitsBits = words::bitLength(words::trimmed(product)) <= kBits;
    throw NamedException("ArithmeticException",
                         fitsBits ? "overflow." : "Multiplication overflow.");
  }
  return Magnitude::toBigInt(product, negativeProduct);
}

BigInt BigInt::negate() const {
  const Magnitude magnitude(*this);
  return Magnitude::toBigInt(magnitude.words(), !magnitude.negative());
}

BigInt BigInt::abs() const { return negative() ? negate() : *this; }

BigInt BigInt::sqrt() const {
  if (negative() || equals(BigInt())) {
    return {};
  }
  // Newton's iteration from above: it falls until it has reached the root.
  BigInt root = BigInt(1).shiftLeft((bitCount() + 1) / 2);
  for (;;) {
    const BigInt next = root.add(divide(root)).shiftRight(1);
    if (next.greaterThanOrEqualTo(root)) {
      return root;
    }
    root = next;
  }
}

}  // namespace quillet
