#include "netaddr/Magnitude.h"

#include <algorithm>

#include "netaddr/NamedException.h"

namespace quillet {

Magnitude::Magnitude(const BigInt& value) : negative_(value.negative()) {
  if (negative_) {
    negated_ = value.data_;
    words::negate(negated_);
    words_ = words::trimmed(negated_);
  } else {
    words_ = words::trimmed(words::View(value.data_).first(value.dataLength_));
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
  std::ranges::copy(used, result.data_.begin());
  if (negative && !used.empty()) {
    words::negate(result.data_);
    result.trim(BigInt::kWords);
  } else {
    result.dataLength_ = std::max<std::size_t>(used.size(), 1);
  }
  return result;
}

}  // namespace quillet
