#include <algorithm>
#include <functional>

#include "netaddr/BigInt.h"
#include "netaddr/BigIntWords.h"

namespace quillet {

BigInt BigInt::bitNot() const {
  BigInt result;
  std::ranges::transform(data_, result.data_.begin(), std::bit_not<Word>());
  result.trim(kWords);
  return result;
}

BigInt BigInt::bitAnd(const BigInt& other) const {
  BigInt result;
  const std::size_t used = std::min(dataLength_, other.dataLength_);
  for (std::size_t i = 0; i < used; ++i) {
    result.data_[i] = data_[i] & other.data_[i];
  }
  result.trim(used);
  return result;
}

BigInt BigInt::bitOr(const BigInt& other) const {
  BigInt result;
  const std::size_t used = std::max(dataLength_, other.dataLength_);
  for (std::size_t i = 0; i < used; ++i) {
    result.data_[i] = data_[i] | other.data_[i];
  }
  result.trim(used);
  return result;
}

BigInt BigInt::xOr(const BigInt& other) const {
  BigInt result;
  const std::size_t used = std::max(dataLength_, other.dataLength_);
  for (std::size_t i = 0; i < used; ++i) {
    result.data_[i] = data_[i] ^ other.data_[i];
  }
  result.trim(used);
  return result;
}

BigInt BigInt::shiftLeft(int bits) const {
  const auto amount = static_cast<std::size_t>(std::max(bits, 0));
  const std::size_t used = std::min(dataLength_ + amount / kWordBits + 1, kWords);
  BigInt result = *this;
  words::shiftLeft(words::Buffer(result.data_).first(used), amount);
  result.trim(used);
  return result;
}

BigInt BigInt::shiftRight(int bits) const {
  if (!negative()) {
    BigInt result = *this;
    result.dataLength_ = shiftRight(words::Buffer(result.data_).first(dataLength_), bits);
    return result;
  }
  // Sign bits come in at the top: they are the zeros of the complement.
  return bitNot().shiftRight(bits).bitNot();
}

int BigInt::bitCount() const {
  if (negative()) {
    return kWordBits * static_cast<int>(dataLength_);
  }
  return words::bitLength(words::trimmed(words::View(data_).first(dataLength_)));
}

std::size_t BigInt::shiftLeft(std::span<Word> buffer, int bits) {
  words::shiftLeft(buffer, static_cast<std::size_t>(std::max(bits, 0)));
  return std::max(words::trimmed(buffer).size(), std::min<std::size_t>(buffer.size(), 1));
}

std::size_t BigInt::shiftRight(std::span<Word> buffer, int bits) {
  words::shiftRight(buffer, static_cast<std::size_t>(std::max(bits, 0)));
  return std::max(words::trimmed(buffer).size(), std::min<std::size_t>(buffer.size(), 1));
}

}  // namespace quillet
