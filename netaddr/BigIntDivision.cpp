#include <algorithm>
#include <array>
#include <utility>

#include "netaddr/BigInt.h"
#include "netaddr/Magnitude.h"

namespace quillet {
namespace {

using Words = std::array<words::Word, BigInt::kWords>;

/// Quotient and remainder of two magnitudes, where the divisor may be 0.
struct UnsignedDivision {
  UnsignedDivision(words::View dividend, words::View divisor) {
    if (divisor.empty()) {
      std::ranges::copy(dividend, remainderWords.begin());
      remainder = words::View(remainderWords).first(dividend.size());
      return;
    }
    const std::size_t size =
        dividend.size() < divisor.size() ? 0 : dividend.size() - divisor.size() + 1;
    words::divide(words::Buffer(quotientWords).first(size),
                  words::Buffer(remainderWords).first(divisor.size()), dividend, divisor);
    quotient = words::View(quotientWords).first(size);
    remainder = words::View(remainderWords).first(divisor.size());
  }
  UnsignedDivision(const UnsignedDivision&) = delete;
  UnsignedDivision& operator=(const UnsignedDivision&) = delete;

  words::View quotient;
  words::View remainder;

 private:
  Words quotientWords;
  Words remainderWords;
};

words::View unsignedWords(const BigInt& value) {
  return words::trimmed(value.getData().first(value.dataLength()));
}

}  // namespace

BigInt BigInt::divide(const BigInt& divisor) const {
  const Magnitude a(*this);
  const Magnitude b(divisor);
  const UnsignedDivision division(a.words(), b.words());
  return Magnitude::toBigInt(division.quotient, a.negative() != b.negative());
}

BigInt BigInt::mod(const BigInt& divisor) const {
  const Magnitude a(*this);
  const Magnitude b(divisor);
  const UnsignedDivision division(a.words(), b.words());
  return Magnitude::toBigInt(division.remainder, a.negative());
}

BigInt BigInt::gcd(const BigInt& other) const {
  const Magnitude a(*this);
  const Magnitude b(other);
  Words larger;
  Words smaller;
  words::View x = words::Buffer(larger).first(a.words().size());
  words::View y = words::Buffer(smaller).first(b.words().size());
  std::ranges::copy(a.words(), larger.begin());
  std::ranges::copy(b.words(), smaller.begin());
  while (!y.empty()) {
    const UnsignedDivision division(x, y);
    const words::View rest = words::trimmed(division.remainder);
    std::swap(larger, smaller);
    x = words::View(larger).first(y.size());
    std::ranges::copy(rest, smaller.begin());
    y = words::View(smaller).first(rest.size());
  }
  return Magnitude::toBigInt(x);
}

BigInt::Division BigInt::singleByteDivide(const BigInt& dividend, const BigInt& divisor) {
  const words::View divisorWords = unsignedWords(divisor);
  if (divisorWords.size() != 1) {
    return multiByteDivide(dividend, divisor);
  }
  Division result;
  const words::View a = unsignedWords(dividend);
  result.remainder.data_[0] = words::divideByWord(result.quotient.data_, a, divisorWords[0]);
  result.quotient.trim(kWords);
  return result;
}

BigInt::Division BigInt::multiByteDivide(const BigInt& dividend, const BigInt& divisor) {
  const UnsignedDivision division(unsignedWords(dividend), unsignedWords(divisor));
  return {BigInt(division.quotient), BigInt(division.remainder)};
}

}  // namespace quillet
