#include <algorithm>
#include <array>
#include <utility>

#include "netaddr/BigInt.h"
#include "netaddr/Magnitude.h"

namespace quillet {
namespace {

using Limbs = std::array<words::Limb, BigInt::kLimbs>;

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
  Limbs quotient_;
  Limbs remainder_;
  std::size_t quotientSize_ = 0;
  std::size_t remainderSize_;
};

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
  Limbs larger;
  Limbs smaller;
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
  const words::View divisorLimbs = words::trimmed(divisor.limbs_);
  if (divisorLimbs.size() != 1) {
    return multiByteDivide(dividend, divisor);
  }
  Division result;
  const words::View a = words::trimmed(dividend.limbs_);
  result.remainder.limbs_[0] =
      words::divideByLimb(result.quotient.limbs_, a, words::LimbDivisor(divisorLimbs[0]));
  result.quotient.trim(kLimbs);
  result.remainder.trim(1);
  return result;
}

BigInt::Division BigInt::multiByteDivide(const BigInt& dividend, const BigInt& divisor) {
  const UnsignedDivision division(words::trimmed(dividend.limbs_), words::trimmed(divisor.limbs_));
  Division result;
  std::ranges::copy(division.quotient(), result.quotient.limbs_.begin());
  std::ranges::copy(division.remainder(), result.remainder.limbs_.begin());
  result.quotient.trim(kLimbs);
  result.remainder.trim(kLimbs);
  return result;
}

}  // namespace quillet
