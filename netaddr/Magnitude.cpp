#include "netaddr/Magnitude.h"

#include <algorithm>

#include "netaddr/NamedException.h"

namespace quillet {

Magnitude::Magnitude(const BigInt& value) : negative_(value.negative()) {
  if (negative_) {
    negated_ = value.limbs_;
    words::negate(negated_);
    size_ = words::trimmed(negated_).size();
  } else {
    positive_ = words::trimmed(words::View(value.limbs_).first(value.limbsInUse()));
  }
}

bool Magnitude::fits(words::View words, bool negative) {
  const words::View used = words::trimmed(words);
  const int bits = words::bitLength(used);
  return bits < BigInt::kBits ||
         (negative && bits == BigInt::kBits && words::trailingZeros(used) == BigInt::kBits - 1);
}

BigInt Magnitude::toBigInt(words::View words, bool negative) {
  if (!fits(words, negative)) {
    throw NamedException("ArithmeticException", "Overflow in negation.");
  }
  const words::View used = words::trimmed(words);
  BigInt result;
  std::ranges::copy(used, result.limbs_.begin());
  if (negative && !used.empty()) {
    words::negate(result.limbs_);
    result.trim(BigInt::kLimbs);
  } else {
    result.trim(used.size());
  }
  return result;
}

}  // namespace quillet
