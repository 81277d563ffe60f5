#include "netaddr/BigInt.h"

#include <algorithm>

#include "netaddr/BigIntWords.h"
#include "netaddr/NamedException.h"

namespace quillet {
namespace {

/// Where a word begins in its limb.
std::size_t bitOfWord(std::size_t index) { return index % 2 * BigInt::kWordBits; }

}  // namespace

BigInt::BigInt(std::int32_t value) : BigInt(std::int64_t{value}) {}

BigInt::BigInt(std::int64_t value) : BigInt(static_cast<std::uint64_t>(value)) {
  if (value < 0) {
    std::fill(limbs_.begin() + 1, limbs_.end(), ~words::Limb{0});
    dataLength_ = kWords;
  }
}

BigInt::BigInt(std::uint64_t value) {
  limbs_[0] = value;
  trim(1);
}

BigInt::BigInt(std::span<const Word> words) {
  if (words.size() > kWords) {
    throw NamedException("ArithmaticException", "Byte overflow in constructor");
  }
  for (std::size_t i = 0; i < words.size(); ++i) {
    limbs_[i / 2] |= words::Limb{words[i]} << bitOfWord(i);
  }
  trim((words.size() + 1) / 2);
}

std::array<BigInt::Word, BigInt::kWords> BigInt::getData() const {
  std::array<Word, kWords> words;
  for (std::size_t i = 0; i < kWords; ++i) {
    words[i] = getDataAtIndex(i);
  }
  return words;
}

BigInt::Word BigInt::getDataAtIndex(std::size_t index) const {
  return index < kWords ? static_cast<Word>(limbs_[index / 2] >> bitOfWord(index)) : 0;
}

void BigInt::setData(Word word, std::size_t index) {
  if (index >= kWords) {
    return;
  }
  limbs_[index / 2] ^= words::Limb{getDataAtIndex(index) ^ word} << bitOfWord(index);
  if (word != 0) {
    dataLength_ = std::max(dataLength_, index + 1);
  }
}

void BigInt::setDataLength(std::size_t length) {
  dataLength_ = std::clamp<std::size_t>(length, 1, kWords);
  std::fill(limbs_.begin() + static_cast<std::ptrdiff_t>(limbsInUse()), limbs_.end(), 0);
  if (dataLength_ % 2 != 0) {
    setData(0, dataLength_);
  }
}

void BigInt::trim(std::size_t bound) {
  const words::View used = words::trimmed(words::View(limbs_).first(bound));
  const bool halfFilled = !used.empty() && used.back() >> kWordBits == 0;
  dataLength_ = std::max<std::size_t>(2 * used.size() - (halfFilled ? 1 : 0), 1);
}

std::int32_t BigInt::intValue() const { return static_cast<std::int32_t>(limbs_[0]); }

bool BigInt::equals(const BigInt& other) const {
  const std::size_t used = std::max(limbsInUse(), other.limbsInUse());
  return std::ranges::equal(words::View(limbs_).first(used), words::View(other.limbs_).first(used));
}

bool BigInt::lessThan(const BigInt& other) const {
  if (negative() != other.negative()) {
    return negative();
  }
  const std::size_t used = std::max(limbsInUse(), other.limbsInUse());
  return words::compare(words::View(limbs_).first(used), words::View(other.limbs_).first(used)) < 0;
}

bool BigInt::greaterThan(const BigInt& other) const { return other.lessThan(*this); }
bool BigInt::lessThanOrEqualTo(const BigInt& other) const { return !other.lessThan(*this); }
bool BigInt::greaterThanOrEqualTo(const BigInt& other) const { return !lessThan(other); }

}  // namespace quillet
