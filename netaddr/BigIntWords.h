#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// Unsigned numbers as runs of 32-bit words, the least significant first: the schoolbook steps of
/// which BigInt is made. Nothing here knows a sign or a capacity; the caller brings room for every
/// result.
namespace quillet::words {

using Word = std::uint32_t;
using DoubleWord = std::uint64_t;
using View = std::span<const Word>;
using Buffer = std::span<Word>;

inline constexpr int kWordBits = 32;

/// The words without zeros at the top: none for zero.
View trimmed(View words);

/// Less than, equal to or greater than 0 as a is below, equal to or above b; both trimmed, or of
/// one size.
int compare(View a, View b);

/// The position of the highest set bit plus one; trimmed.
int bitLength(View words);

/// The number that `width` bits from bit `position` up make; 0 past the end. The width divides 32,
/// the position is a multiple of it.
Word digitAt(View words, int position, int width);

/// The number of zero bits below the lowest set bit; 0 for zero.
int trailingZeros(View words);

/// sum += addend, where the addend is no longer; the carry out of the sum's top word.
Word add(Buffer sum, View addend);

/// difference -= subtrahend, where the subtrahend is no longer; the borrow out of the top word.
Word subtract(Buffer difference, View subtrahend);

/// words = 2^(32 * size) - words.
void negate(Buffer words);

/// sum[0 .. a.size()) += a * factor; the carry out of that range.
Word addProduct(Buffer sum, View a, Word factor);

/// difference[0 .. a.size()) -= a * factor; the borrow out of that range.
Word subtractProduct(Buffer difference, View a, Word factor);

/// words = words * factor + addend; the carry out.
Word multiplyAdd(Buffer words, Word factor, Word addend);

/// product = a * b; the product has a.size() + b.size() words and overlaps neither.
void multiply(Buffer product, View a, View b);

/// product = a * a, in about two thirds of the time.
void square(Buffer product, View a);

/// Shifts by any amount from 0 up within the buffer; bits leave at its ends.
void shiftLeft(Buffer words, std::size_t bits);
void shiftRight(Buffer words, std::size_t bits);

/// The quotient by a word that is not 0, as long as the dividend and maybe its own buffer; the
/// remainder.
Word divideByWord(Buffer quotient, View dividend, Word divisor);

/// The remainder alone.
Word remainderByWord(View dividend, Word divisor);

/// Division by a divisor that is trimmed and not zero. The quotient has dividend.size() -
/// divisor.size() + 1 words (0 when the divisor is longer), the remainder as many as the divisor;
/// neither overlaps an operand. The dividend has at most kLongestDividend words.
inline constexpr std::size_t kLongestDividend = 2 * 70 + 1;
void divide(Buffer quotient, Buffer remainder, View dividend, View divisor);

}  // namespace quillet::words
