#include <algorithm>
#include <array>
#include <bit>

#include "netaddr/BigIntWords.h"

namespace quillet::words {
namespace {

/// Knuth, The Art of Computer Programming 4.3.1, step D3: one quotient digit from the top three
/// limbs of what is left and the top two of the normalised divisor. It is right or, rarely, one too
/// large.
Limb estimatedDigit(View top, const LimbDivisor& divisorTop, Limb divisorNext) {
  Limb digit = ~Limb{0};
  Limb rest = top[2];
  if (rest < divisorTop.shifted()) {
    digit = divisorTop.divide(rest, top[1]);
  } else {
    rest = top[1] + divisorTop.shifted();
    if (rest < top[1]) {
      return digit;
    }
  }
  while (DoubleLimb{digit} * divisorNext > ((DoubleLimb{rest} << kLimbBits) | top[0])) {
    --digit;
    rest += divisorTop.shifted();
    if (rest < divisorTop.shifted()) {
      break;
    }
  }
  return digit;
}

/// Steps D4 to D6: takes digit * divisor from `left`, which is one word longer than the divisor,
/// and adds the divisor back when the digit was one too large. The digit that was right.
Limb takeAway(Buffer left, View divisor, Limb digit) {
  const Limb borrow = subtractProduct(left, divisor, digit);
  Limb& top = left[divisor.size()];
  const bool tooLarge = top < borrow;
  top -= borrow;
  if (tooLarge) {
    top += add(left.first(divisor.size()), divisor);
    --digit;
  }
  return digit;
}

/// Algorithm D for a divisor of two limbs or more that is no longer than the dividend.
void divideLong(Buffer quotient, Buffer remainder, View dividend, View divisor) {
  std::array<Limb, kLongestDividend + 1> leftWords;
  std::array<Limb, kLongestDividend> divisorWords;
  const Buffer left = Buffer(leftWords).first(dividend.size() + 1);
  const Buffer normal = Buffer(divisorWords).first(divisor.size());
  const auto shift = static_cast<std::size_t>(std::countl_zero(divisor.back()));
  std::ranges::copy(dividend, left.begin());
  left.back() = 0;
  std::ranges::copy(divisor, normal.begin());
  shiftLeft(left, shift);
  shiftLeft(normal, shift);

  const std::size_t size = normal.size();
  const LimbDivisor top(normal.back());
  for (std::size_t i = quotient.size(); i-- > 0;) {
    const Limb digit = estimatedDigit(left.subspan(i + size - 2, 3), top, normal[size - 2]);
    quotient[i] = takeAway(left.subspan(i, size + 1), normal, digit);
  }
  shiftRight(left.first(size), shift);
  std::ranges::copy(left.first(size), remainder.begin());
}

}  // namespace

LimbDivisor::LimbDivisor(Limb divisor)
    : shift_(std::countl_zero(divisor)),
      divisor_(divisor << shift_),
      reciprocal_(static_cast<Limb>(~(DoubleLimb{divisor_} << kLimbBits) / divisor_)) {}

Limb divideByLimb(Buffer quotient, View dividend, const LimbDivisor& divisor) {
  // The dividend is shifted as the divisor is: each limb takes bits of the one below.
  const int shift = divisor.shift();
  const auto bitsOfNext = [shift](Limb next) {
    return static_cast<Limb>((DoubleLimb{next} << shift) >> kLimbBits);
  };
  Limb rest = dividend.empty() ? 0 : bitsOfNext(dividend.back());
  for (std::size_t i = dividend.size(); i-- > 0;) {
    const Limb next = i > 0 ? bitsOfNext(dividend[i - 1]) : 0;
    quotient[i] = divisor.divide(rest, (dividend[i] << shift) | next);
  }
  return rest >> shift;
}

Limb remainderByLimb(View dividend, Limb divisor) {
  DoubleLimb rest = 0;
  for (std::size_t i = dividend.size(); i-- > 0;) {
    rest = ((rest << kLimbBits) | dividend[i]) % divisor;
  }
  return static_cast<Limb>(rest);
}

void divide(Buffer quotient, Buffer remainder, View dividend, View divisor) {
  if (dividend.size() < divisor.size()) {
    std::ranges::fill(quotient, 0);
    std::ranges::fill(std::ranges::copy(dividend, remainder.begin()).out, remainder.end(), 0);
  } else if (divisor.size() == 1) {
    remainder[0] = divideByLimb(quotient, dividend, LimbDivisor(divisor[0]));
  } else {
    divideLong(quotient, remainder, dividend, divisor);
  }
}

}  // namespace quillet::words
