#include "netaddr/BigInt.h"

#include <algorithm>
#include <bit>

#include "netaddr/BigIntWords.h"
#include "netaddr/NamedException.h"

namespace quillet {

BigInt::BigInt(std::int32_t value) : BigInt(std::int64_t{value}) {}

BigInt::BigInt(std::int64_t value) : BigInt(static_cast<std::uint64_t>(value)) {
  if (value < 0) {
    std::fill(data_.begin() + 2, data_.end(), ~Word{0});
    dataLength_ = kWords;
  }
}

BigInt::BigInt(std::uint64_t value) {
  data_[0] = static_cast<Word>(value);
  data_[1] = static_cast<Word>(value >> kWordBits);
  trim(2);
}

BigInt::BigInt(std::span<const Word> words) {
  if (words.size() > kWords) {
    throw NamedException("ArithmaticException", "Byte overflow in constructor");
  }
  std::ranges::copy(words, data_.begin());
  trim(words.size());
}

BigInt::Word BigInt::getDataAtIndex(std::size_t index) const {
  return index < kWords ? data_[index] : 0;
}

void BigInt::setData(Word word, std::size_t index) {
  if (index >= kWords) {
    return;
  }
  data_[index] = word;
  if (word != 0) {
    dataLength_ = std::max(dataLength_, index + 1);
  }
}

void BigInt::setDataLength(std::size_t length) {
  dataLength_ = std::clamp<std::size_t>(length, 1, kWords);
  std::fill(data_.begin() + static_cast<std::ptrdiff_t>(dataLength_), data_.end(), 0);
}

void BigInt::trim(std::size_t bound) {
  dataLength_ = std::max<std::size_t>(words::trimmed(words::View(data_).first(bound)).size(), 1);
}

std::int32_t BigInt::intValue() const { return static_cast<std::int32_t>(data_[0]); }

bool BigInt::equals(const BigInt& other) const {
  const std::size_t used = std::max(dataLength_, other.dataLength_);
  return std::ranges::equal(words::View(data_).first(used), words::View(other.data_).first(used));
}

bool BigInt::lessThan(const BigInt& other) const {
  if (negative() != other.negative()) {
    return negative();
  }
  const std::size_t used = std::max(dataLength_, other.dataLength_);
  return words::compare(words::View(data_).first(used), words::View(other.data_).first(used)) < 0;
}

bool BigInt::greaterThan(const BigInt& other) const { return other.lessThan(*this); }
bool BigInt::lessThanOrEqualTo(const BigInt& other) const { return !other.lessThan(*this); }
bool BigInt::greaterThanOrEqualTo(const BigInt& other) const { return !lessThan(other); }

}  // namespace quillet
