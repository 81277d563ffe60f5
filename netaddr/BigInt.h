#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace quillet {

/// A signed integer of fixed capacity: two's complement over 70 words of 32 bits, so from -2^2239
/// to 2^2239 - 1. A value lives in its object and allocates nothing; work is done on the words in
/// use, two at a time: inside there are limbs of 64 bits.
///
/// Every operation but `getRandomBits` and the word setters leaves its operands as they are. A
/// misuse named below throws NamedException, with name and reason as given there, and changes
/// nothing. What has no mathematical answer has a defined one, so that no operand can stop the
/// process: a divisor of 0 gives the quotient 0 and the dividend as the remainder.
class BigInt {
 public:
  using Word = std::uint32_t;
  static constexpr std::size_t kWords = 70;
  static constexpr int kWordBits = 32;
  static constexpr int kBits = 2240;
  static constexpr std::size_t kLimbs = kWords / 2;

  /// Quotient and remainder of one division.
  struct Division;
  /// Three terms of a Lucas sequence at one index.
  struct LucasTerms;

  /// Zero.
  BigInt() = default;
  explicit BigInt(std::int32_t value);
  explicit BigInt(std::int64_t value);
  explicit BigInt(std::uint64_t value);
  /// The value made of the words, the least significant first as in `getData`; zero of none. 70
  /// words may make a negative value. More throw "ArithmaticException", "Byte overflow in
  /// constructor".
  explicit BigInt(std::span<const Word> words);
  /// The value of the digits 0-9, A-Z and a-z after an optional "-". Throws "ArithmeticException":
  /// "Invalid string in constructor." for no digit at all, any other character, or a digit not
  /// below the radix (any radix is taken at its word, so that below 2 nothing but zeros is left);
  /// "Positive overflow in constructor." and "Negative underflow in constructor." for a value out
  /// of range.
  /// "-0" is such an underflow: the value's sign has to be the text's.
  BigInt(std::string_view text, int radix);

  static BigInt create() { return BigInt(); }
  static BigInt createFromInt(std::int32_t value) { return BigInt(value); }
  static BigInt createFromLong(std::int64_t value) { return BigInt(value); }
  static BigInt createFromULong(std::uint64_t value) { return BigInt(value); }
  static BigInt createFromBigInt(const BigInt& value) { return value; }
  static BigInt createFromString(std::string_view text, int radix) { return {text, radix}; }

  /// All 70 words, the least significant first.
  [[nodiscard]] std::array<Word, kWords> getData() const;
  /// One word; 0 past the last.
  [[nodiscard]] Word getDataAtIndex(std::size_t index) const;
  /// Sets one word and lets `dataLength` grow to hold it; nothing happens past the last word.
  void setData(Word word, std::size_t index);
  /// The number of words in use, 1 to 70. All words at and above it are 0.
  [[nodiscard]] std::size_t dataLength() const { return dataLength_; }
  /// Keeps that many words (at least 1, at most 70) and clears those above.
  void setDataLength(std::size_t length);

  /// Sum and difference; throw "ArithmeticException", "Overflow" when out of range.
  [[nodiscard]] BigInt add(const BigInt& other) const;
  [[nodiscard]] BigInt subtract(const BigInt& other) const;
  /// Throws "ArithmeticException": "Multiplication overflow." when the product does not fit 2240
  /// bits, "overflow." when it fits them but would need the sign bit.
  [[nodiscard]] BigInt multiply(const BigInt& other) const;
  /// The quotient, cut towards zero. The most negative value divided by -1 throws as `negate` does.
  [[nodiscard]] BigInt divide(const BigInt& divisor) const;
  /// What `divide` leaves: its sign is the dividend's.
  [[nodiscard]] BigInt mod(const BigInt& divisor) const;
  /// Both throw "ArithmeticException", "Overflow in negation." for the most negative value.
  [[nodiscard]] BigInt negate() const;
  [[nodiscard]] BigInt abs() const;

  /// Bit operations on the words as they stand, sign bits included. (`not`, `and` and `or` are
  /// words of the language.)
  [[nodiscard]] BigInt bitNot() const;
  [[nodiscard]] BigInt bitAnd(const BigInt& other) const;
  [[nodiscard]] BigInt bitOr(const BigInt& other) const;
  [[nodiscard]] BigInt xOr(const BigInt& other) const;
  /// Bits shifted out are lost. An amount below 0 shifts nothing, one of 2240 or more shifts all
  /// out.
  [[nodiscard]] BigInt shiftLeft(int bits) const;
  /// The same to the right, where copies of the sign bit come in.
  [[nodiscard]] BigInt shiftRight(int bits) const;
  /// The position of the highest set bit plus one, 0 for zero; 32 times `dataLength` for a negative
  /// value.
  [[nodiscard]] int bitCount() const;

  [[nodiscard]] bool equals(const BigInt& other) const;
  [[nodiscard]] bool greaterThan(const BigInt& other) const;
  [[nodiscard]] bool lessThan(const BigInt& other) const;
  [[nodiscard]] bool lessThanOrEqualTo(const BigInt& other) const;
  [[nodiscard]] bool greaterThanOrEqualTo(const BigInt& other) const;
  friend bool operator==(const BigInt& left, const BigInt& right) { return left.equals(right); }

  /// The greatest integer whose square is not above this value; 0 for a negative value.
  [[nodiscard]] BigInt sqrt() const;
  /// The greatest common divisor, never negative; 0 of two zeros. 2^2239, which only the most
  /// negative value and 0 can give, throws as `negate` does.
  [[nodiscard]] BigInt gcd(const BigInt& other) const;

  /// Digits 0-9 and A-Z after a "-" for a negative value. Throws "ArgumentException",
  /// "Radix must be >= 2 and <= 36" for any other radix.
  [[nodiscard]] std::string toStringWithRadix(int radix) const;
  /// Word 0 as a signed number.
  [[nodiscard]] std::int32_t intValue() const;

  /// What `mod` leaves of this value to the power of `exponent`; 0 for a modulus of 0. Throws
  /// "ArithmeticException", "Positive exponents only." for a negative exponent.
  [[nodiscard]] BigInt modPow(const BigInt& exponent, const BigInt& modulus) const;

  /// Makes this value a random number from the system's random source of exactly that many bits,
  /// its top bit set (2240 bits: a negative value); zero for less than one bit. Throws
  /// "ArithmeticException", "Number of required bits > maxLength." for more than 2240, and
  /// std::system_error when the system has no randomness to give.
  void getRandomBits(int bits);

  /// Whether the absolute value is prime: trial division by the primes below 2000, then a strong
  /// test to base 2 and a strong Lucas test. No composite that passes is known.
  [[nodiscard]] bool isProbablePrime() const;
  /// The same trial division, then `rabinMillerTestWithConfidence`.
  [[nodiscard]] bool isProbablePrimeWithConfidence(int confidence) const;
  /// That many (at least one) rounds of the Rabin-Miller test of the absolute value with random
  /// bases; a composite passes a round with a chance below 1/4.
  [[nodiscard]] bool rabinMillerTestWithConfidence(int confidence) const;
  /// A random probable prime of exactly that many bits; 0 below 2 bits, where there is none. Throws
  /// as `getRandomBits` does, and for 2240 bits too, where no positive value is.
  static BigInt generatePseudoPrimeWithBits(int bits, int confidence);

  /// The Jacobi symbol (a/b): -1, 0 or 1; for a negative b Kronecker's extension. Throws
  /// "ArgumentException", "Jacobi defined only for odd integers." for an even b.
  static int jacobi(const BigInt& a, const BigInt& b);
  /// The terms of the Lucas sequence of p and q at index k times 2^s, modulo the absolute value of
  /// n, each from 0 up; all 0 for an n of 0. `constant` is n's for `barrettReduction`. The sign of
  /// k is ignored, an s below 0 is 0. Throws "ArgumentException", "Argument k must be odd." for an
  /// even k.
  static LucasTerms lucasSequence(const BigInt& p, const BigInt& q, const BigInt& k,
                                  const BigInt& n, const BigInt& constant, int s);
  /// The strong Lucas probable prime test of the absolute value, with p = 1 and q = (1 - d) / 4 for
  /// the first d of 5, -7, 9, -11, ... whose Jacobi symbol is -1.
  static bool lucasStrongTest(const BigInt& candidate);
  /// x modulo n by two multiplications. `constant` is 2^(64 * w) / n, where w is the number of
  /// words in use of n. Where the method does not hold (x negative or of more than 2 * w words, n
  /// not positive, another constant) the result is that of `mod` all the same.
  static BigInt barrettReduction(const BigInt& x, const BigInt& n, const BigInt& constant);

  /// Shifts an unsigned number, the least significant word first, in place; returns its words in
  /// use, at least 1 (0 of an empty buffer). Bits leave at the buffer's ends; amounts as for the
  /// shifts above.
  static std::size_t shiftLeft(std::span<Word> buffer, int bits);
  static std::size_t shiftRight(std::span<Word> buffer, int bits);
  /// Division of the words as unsigned numbers: the one for a divisor of one word, the other for a
  /// longer one. Each hands a divisor that is not its own to its twin.
  static Division singleByteDivide(const BigInt& dividend, const BigInt& divisor);
  static Division multiByteDivide(const BigInt& dividend, const BigInt& divisor);

 private:
  friend class Magnitude;

  [[nodiscard]] bool negative() const { return static_cast<std::int64_t>(limbs_.back()) < 0; }
  [[nodiscard]] std::size_t limbsInUse() const { return (dataLength_ + 1) / 2; }
  /// Lets `dataLength` be what the limbs above 0 need, which lie below `bound`.
  void trim(std::size_t bound);

  std::array<std::uint64_t, kLimbs> limbs_{};
  std::size_t dataLength_ = 1;
};

struct BigInt::Division {
  BigInt quotient;
  BigInt remainder;
};

struct BigInt::LucasTerms {
  BigInt u;
  BigInt v;
  /// q to the power of the index.
  BigInt qPower;
};

}  // namespace quillet
