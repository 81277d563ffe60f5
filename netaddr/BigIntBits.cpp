#include <algorithm>
#include <functional>

#include "netaddr/BigInt.h"
#include "netaddr/BigIntWords.h"

namespace quillet {
namespace {

std::size_t amountOf(int bits) { return static_cast<std::size_t>(std::max(bits, 0)); }

std::size_t wordsInUse(std::span<const BigInt::Word> buffer) {
  std::size_t size = buffer.size();
  while (size > 1 && buffer[size - 1] == 0) {
    --size;
  }
  return size;
}

}  // namespace

BigInt BigInt::bitNot() const {
  BigInt result;
  std::ranges::transform(limbs_, result.limbs_.begin(), std::bit_not<words::Limb>());
  result.trim(kLimbs);
  return result;
}

BigInt BigInt::bitAnd(const BigInt& other) const {
  BigInt result;
  const std::size_t used = std::min(limbsInUse(), other.limbsInUse());
  for (std::size_t i = 0; i < used; ++i) {
    result.limbs_[i] = limbs_[i] & other.limbs_[i];
  }
  result.trim(used);
  return result;
}

BigInt BigInt::bitOr(const BigInt& other) const {
  BigInt result;
  const std::size_t used = std::max(limbsInUse(), other.limbsInUse());
  for (std::size_t i = 0; i < used; ++i) {
    result.limbs_[i] = limbs_[i] | other.limbs_[i];
  }
  result.trim(used);
  return result;
}

BigInt BigInt::xOr(const BigInt& other) const {
  BigInt result;
  const std::size_t used = std::max(limbsInUse(), other.limbsInUse());
  for (std::size_t i = 0; i < used; ++i) {
    result.limbs_[i] = limbs_[i] ^ other.limbs_[i];
  }
  result.trim(used);
  return result;
}

BigInt BigInt::shiftLeft(int bits) const {
  const std::size_t amount = amountOf(bits);
  const std::size_t used = std::min(limbsInUse() + amount / words::kLimbBits + 1, kLimbs);
  BigInt result = *this;
  words::shiftLeft(words::Buffer(result.limbs_).first(used), amount);
  result.trim(used);
  return result;
}

BigInt BigInt::shiftRight(int bits) const {
  if (!negative()) {
    BigInt result = *this;
    words::shiftRight(words::Buffer(result.limbs_).first(limbsInUse()), amountOf(bits));
    result.trim(limbsInUse());
    return result;
  }
  // Sign bits come in at the top: they are the zeros of the complement.
  return bitNot().shiftRight(bits).bitNot();
}

int BigInt::bitCount() const {
  if (negative()) {
    return kWordBits * static_cast<int>(dataLength_);
  }
  return words::bitLength(words::trimmed(words::View(limbs_).first(limbsInUse())));
}

std::size_t BigInt::shiftLeft(std::span<Word> buffer, int bits) {
  words::shiftLeft(buffer, amountOf(bits));
  return wordsInUse(buffer);
}

std::size_t BigInt::shiftRight(std::span<Word> buffer, int bits) {
  words::shiftRight(buffer, amountOf(bits));
  return wordsInUse(buffer);
}

}  // namespace quillet
