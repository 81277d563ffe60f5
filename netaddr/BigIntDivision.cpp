#include <algorithm>
#include <array>
#include <utility>

#include "netaddr/BigInt.h"
#include "netaddr/Magnitude.h"

namespace quillet {
namespace {

using Words = std::array<words::Word, BigInt::kWords>;

/// Quotient and remainder of two magnitudes, where the divisor may be 0.
class UnsignedDivision {
 public:
  UnsignedDivision(words::View dividend, words::View divisor) : remainderSize_(divisor.size()) {
    if (divisor.empty()) {
      std::ranges::copy(dividend, remainder_.begin());
      remainderSize_ = dividend.size();
      return;
    }
    if (dividend.size() >= divisor.size()) {
      quotientSize_ = dividend.size() - divisor.size() + 1;
    }
    words::divide(words::Buffer(quotient_).first(quotientSize_),
                  words::Buffer(remainder_).first(remainderSize_), dividend, divisor);
  }

  [[nodiscard]] words::View quotient() const { return words::View(quotient_).first(quotientSize_); }
  [[nodiscard]] words::View remainder() const {
    return words::View(remainder_).first(remainderSize_);
  }

 private:
  Words quotient_;
  Words remainder_;
  std::size_t quotientSize_ = 0;
  std::size_t remainderSize_;
};

words::View unsignedWords(const BigInt& value) {
  return words::trimmed(value.getData().first(value.dataLength()));
}

}  // namespace

BigInt BigInt::divide(const BigInt& divisor) const {
  const Magnitude a(*this);
  const Magnitude b(divisor);
  const UnsignedDivision division(a.words(), b.words());
  return Magnitude::toBigInt(division.quotient(), a.negative() != b.negative());
}

BigInt BigInt::mod(const BigInt& divisor) const {
  const Magnitude a(*this);
  const Magnitude b(divisor);
  const UnsignedDivision division(a.words(), b.words());
  return Magnitude::toBigInt(division.remainder(), a.negative());
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
    const words::View rest = words::trimmed(division.remainder());
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
  return {BigInt(division.quotient()), BigInt(division.remainder())};
}

}  // namespace quillet
