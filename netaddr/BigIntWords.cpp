#include "netaddr/BigIntWords.h"

#include <algorithm>
#include <bit>

namespace quillet::words {

View trimmed(View words) {
  std::size_t size = words.size();
  while (size > 0 && words[size - 1] == 0) {
    --size;
  }
  return words.first(size);
}

int compare(View a, View b) {
  if (a.size() != b.size()) {
    return a.size() < b.size() ? -1 : 1;
  }
  for (std::size_t i = a.size(); i-- > 0;) {
    if (a[i] != b[i]) {
      return a[i] < b[i] ? -1 : 1;
    }
  }
  return 0;
}

int bitLength(View words) {
  if (words.empty()) {
    return 0;
  }
  return static_cast<int>(words.size()) * kWordBits - std::countl_zero(words.back());
}

Word digitAt(View words, int position, int width) {
  const auto word = static_cast<std::size_t>(position / kWordBits);
  if (word >= words.size()) {
    return 0;
  }
  return (words[word] >> (position % kWordBits)) & ((Word{1} << width) - 1);
}

int trailingZeros(View words) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (words[i] != 0) {
      return static_cast<int>(i) * kWordBits + std::countr_zero(words[i]);
    }
  }
  return 0;
}

Word add(Buffer sum, View addend) {
  DoubleWord carry = 0;
  for (std::size_t i = 0; i < addend.size(); ++i) {
    carry += DoubleWord{sum[i]} + addend[i];
    sum[i] = static_cast<Word>(carry);
    carry >>= kWordBits;
  }
  for (std::size_t i = addend.size(); carry != 0 && i < sum.size(); ++i) {
    carry = ++sum[i] == 0 ? 1 : 0;
  }
  return static_cast<Word>(carry);
}

Word subtract(Buffer difference, View subtrahend) {
  DoubleWord borrow = 0;
  for (std::size_t i = 0; i < subtrahend.size(); ++i) {
    const DoubleWord word = DoubleWord{difference[i]} - subtrahend[i] - borrow;
    difference[i] = static_cast<Word>(word);
    borrow = word >> (2 * kWordBits - 1);
  }
  for (std::size_t i = subtrahend.size(); borrow != 0 && i < difference.size(); ++i) {
    borrow = difference[i]-- == 0 ? 1 : 0;
  }
  return static_cast<Word>(borrow);
}

void negate(Buffer words) {
  DoubleWord carry = 1;
  for (Word& word : words) {
    carry += static_cast<Word>(~word);
    word = static_cast<Word>(carry);
    carry >>= kWordBits;
  }
}

Word addProduct(Buffer sum, View a, Word factor) {
  DoubleWord carry = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    carry += DoubleWord{a[i]} * factor + sum[i];
    sum[i] = static_cast<Word>(carry);
    carry >>= kWordBits;
  }
  return static_cast<Word>(carry);
}

Word subtractProduct(Buffer difference, View a, Word factor) {
  DoubleWord borrow = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const DoubleWord product = DoubleWord{a[i]} * factor + borrow;
    const auto low = static_cast<Word>(product);
    borrow = (product >> kWordBits) + (difference[i] < low ? 1 : 0);
    difference[i] -= low;
  }
  return static_cast<Word>(borrow);
}

Word multiplyAdd(Buffer words, Word factor, Word addend) {
  DoubleWord carry = addend;
  for (Word& word : words) {
    carry += DoubleWord{word} * factor;
    word = static_cast<Word>(carry);
    carry >>= kWordBits;
  }
  return static_cast<Word>(carry);
}

void multiply(Buffer product, View a, View b) {
  std::ranges::fill(product, 0);
  for (std::size_t i = 0; i < b.size(); ++i) {
    product[i + a.size()] = addProduct(product.subspan(i), a, b[i]);
  }
}

void square(Buffer product, View a) {
  std::ranges::fill(product, 0);
  for (std::size_t i = 0; i + 1 < a.size(); ++i) {
    product[i + a.size()] = addProduct(product.subspan(2 * i + 1), a.subspan(i + 1), a[i]);
  }
  DoubleWord carry = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const DoubleWord diagonal = DoubleWord{a[i]} * a[i];
    carry += (DoubleWord{product[2 * i]} << 1) + static_cast<Word>(diagonal);
    product[2 * i] = static_cast<Word>(carry);
    carry >>= kWordBits;
    carry += (DoubleWord{product[2 * i + 1]} << 1) + (diagonal >> kWordBits);
    product[2 * i + 1] = static_cast<Word>(carry);
    carry >>= kWordBits;
  }
}

void shiftLeft(Buffer words, std::size_t bits) {
  const std::size_t whole = std::min(bits / kWordBits, words.size());
  const auto part = static_cast<int>(bits % kWordBits);
  for (std::size_t i = words.size(); i-- > whole;) {
    DoubleWord pair = DoubleWord{words[i - whole]} << kWordBits;
    pair |= i > whole ? words[i - whole - 1] : 0;
    words[i] = static_cast<Word>(pair >> (kWordBits - part));
  }
  std::ranges::fill(words.first(whole), 0);
}

void shiftRight(Buffer words, std::size_t bits) {
  const std::size_t whole = std::min(bits / kWordBits, words.size());
  const auto part = static_cast<int>(bits % kWordBits);
  const std::size_t kept = words.size() - whole;
  for (std::size_t i = 0; i < kept; ++i) {
    DoubleWord pair = words[i + whole];
    pair |= i + 1 < kept ? DoubleWord{words[i + whole + 1]} << kWordBits : 0;
    words[i] = static_cast<Word>(pair >> part);
  }
  std::ranges::fill(words.subspan(kept), 0);
}

}  // namespace quillet::words
