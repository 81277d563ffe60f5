#include <algorithm>
#include <array>
#include <bit>

#include "netaddr/BigIntWords.h"

namespace quillet::words {
namespace {

constexpr DoubleWord kMaxWord = 0xFFFFFFFF;

/// Knuth, The Art of Computer Programming 4.3.1, step D3: one quotient digit from the top three
/// words of what is left and the top two of the normalised divisor. It is right or, rarely, one too
/// large.
DoubleWord estimatedDigit(View top, Word divisorTop, Word divisorNext) {
  const DoubleWord two = (DoubleWord{top[2]} << kWordBits) | top[1];
  DoubleWord digit = two / divisorTop;
  DoubleWord rest = two % divisorTop;
  while (digit > kMaxWord || digit * divisorNext > ((rest << kWordBits) | top[0])) {
    --digit;
    rest += divisorTop;
    if (rest > kMaxWord) {
      break;
    }
  }
  return digit;
}

/// Steps D4 to D6: takes digit * divisor from `left`, which is one word longer than the divisor,
/// and adds the divisor back when the digit was one too large. The digit that was right.
Word takeAway(Buffer left, View divisor, Word digit) {
  const Word borrow = subtractProduct(left, divisor, digit);
  Word& top = left[divisor.size()];
  const bool tooLarge = top < borrow;
  top -= borrow;
  if (tooLarge) {
    top += add(left.first(divisor.size()), divisor);
    --digit;
  }
  return digit;
}

/// Algorithm D for a divisor of two words or more that is no longer than the dividend.
void divideLong(Buffer quotient, Buffer remainder, View dividend, View divisor) {
  std::array<Word, kLongestDividend + 1> leftWords;
  std::array<Word, kLongestDividend> divisorWords;
  const Buffer left = Buffer(leftWords).first(dividend.size() + 1);
  const Buffer normal = Buffer(divisorWords).first(divisor.size());
  const auto shift = static_cast<std::size_t>(std::countl_zero(divisor.back()));
  std::ranges::copy(dividend, left.begin());
  left.back() = 0;
  std::ranges::copy(divisor, normal.begin());
  shiftLeft(left, shift);
  shiftLeft(normal, shift);

  const std::size_t size = normal.size();
  for (std::size_t i = quotient.size(); i-- > 0;) {
    const DoubleWord digit =
        estimatedDigit(left.subspan(i + size - 2, 3), normal[size - 1], normal[size - 2]);
    quotient[i] = takeAway(left.subspan(i, size + 1), normal, static_cast<Word>(digit));
  }
  shiftRight(left.first(size), shift);
  std::ranges::copy(left.first(size), remainder.begin());
}

}  // namespace

Word divideByWord(Buffer quotient, View dividend, Word divisor) {
  DoubleWord rest = 0;
  for (std::size_t i = dividend.size(); i-- > 0;) {
    rest = (rest << kWordBits) | dividend[i];
    quotient[i] = static_cast<Word>(rest / divisor);
    rest %= divisor;
  }
  return static_cast<Word>(rest);
}

Word remainderByWord(View dividend, Word divisor) {
  DoubleWord rest = 0;
  for (std::size_t i = dividend.size(); i-- > 0;) {
    rest = ((rest << kWordBits) | dividend[i]) % divisor;
  }
  return static_cast<Word>(rest);
}

void divide(Buffer quotient, Buffer remainder, View dividend, View divisor) {
  if (dividend.size() < divisor.size()) {
    std::ranges::fill(quotient, 0);
    std::ranges::fill(std::ranges::copy(dividend, remainder.begin()).out, remainder.end(), 0);
  } else if (divisor.size() == 1) {
    remainder[0] = divideByWord(quotient, dividend, divisor[0]);
  } else {
    divideLong(quotient, remainder, dividend, divisor);
  }
}

}  // namespace quillet::words
