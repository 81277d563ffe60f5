#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "netaddr/BigInt.h"
#include "tests/netaddr/BigIntSamples.h"
#include "tests/netaddr/Thrown.h"

namespace quillet {
namespace {

using Word = BigInt::Word;

std::vector<Word> usedWords(const BigInt& value) {
  const auto words = value.getData().first(value.dataLength());
  return {words.begin(), words.end()};
}

TEST(BigIntTest, HoldsWhatItIsMadeOf) {
  EXPECT_EQ(usedWords(BigInt()), std::vector<Word>{0});
  EXPECT_EQ(usedWords(BigInt(std::int64_t{0x1'00000002})), (std::vector<Word>{2, 1}));
  EXPECT_EQ(usedWords(BigInt(~std::uint64_t{0})), (std::vector<Word>{0xFFFFFFFF, 0xFFFFFFFF}));
  EXPECT_EQ(usedWords(BigInt(std::vector<Word>{3, 2, 1, 0})), (std::vector<Word>{3, 2, 1}));
  EXPECT_EQ(usedWords(BigInt(std::vector<Word>{})), std::vector<Word>{0});

  std::vector<Word> minusTwo(70, 0xFFFFFFFF);
  minusTwo[0] = 0xFFFFFFFE;
  EXPECT_EQ(usedWords(BigInt(-2)), minusTwo);
  EXPECT_EQ(BigInt(minusTwo), BigInt(-2));
  EXPECT_EQ(BigInt(std::numeric_limits<std::int64_t>::min()), hex("-8000000000000000"));
}

TEST(BigIntTest, EveryFailureHasItsNameAndReason) {
  const BigInt high = highest();
  const BigInt low = lowest();
  const BigInt one(1);
  const BigInt even(4);
  BigInt untouched(5);
  const std::string arithmetic = "ArithmeticException: ";
  const std::string argument = "ArgumentException: ";
  const std::pair<std::string, std::function<void()>> rows[] = {
      {arithmetic + "Overflow", [&] { (void)high.add(one); }},
      {arithmetic + "Overflow", [&] { (void)low.add(BigInt(-1)); }},
      {arithmetic + "Overflow", [&] { (void)low.subtract(one); }},
      {arithmetic + "Overflow in negation.", [&] { (void)low.negate(); }},
      {arithmetic + "Overflow in negation.", [&] { (void)low.divide(BigInt(-1)); }},
      {arithmetic + "Overflow in negation.", [&] { (void)low.gcd(BigInt()); }},
      {arithmetic + "overflow.", [&] { (void)high.multiply(BigInt(2)); }},
      {arithmetic + "Multiplication overflow.", [&] { (void)high.multiply(high); }},
      {arithmetic + "Positive exponents only.", [&] { (void)one.modPow(BigInt(-1), high); }},
      {arithmetic + "Number of required bits > maxLength.", [&] { untouched.getRandomBits(2241); }},
      {arithmetic + "Number of required bits > maxLength.",
       [] { (void)BigInt::generatePseudoPrimeWithBits(2240, 1); }},
      {"ArithmaticException: Byte overflow in constructor",
       [] { BigInt number(std::vector<Word>(71)); }},
      {argument + "Radix must be >= 2 and <= 36", [&] { (void)one.toStringWithRadix(1); }},
      {argument + "Radix must be >= 2 and <= 36", [&] { (void)one.toStringWithRadix(37); }},
      {argument + "Argument k must be odd.",
       [&] { (void)BigInt::lucasSequence(one, one, even, high, one, 0); }},
      {argument + "Jacobi defined only for odd integers.",
       [&] { (void)BigInt::jacobi(one, even); }},
  };
  for (const auto& [thrown, call] : rows) {
    EXPECT_EQ(thrownBy(call), thrown);
  }
  EXPECT_EQ(high, highest());
  EXPECT_EQ(low, lowest());
  EXPECT_EQ(untouched, BigInt(5));
}

TEST(BigIntTest, DivisionByZeroAndRootsOfNegativesHaveAnAnswer) {
  EXPECT_EQ(BigInt().sqrt(), BigInt());
  EXPECT_EQ(lowest().sqrt(), BigInt());
  for (const BigInt& value : {BigInt(), BigInt(-7), highest(), lowest()}) {
    EXPECT_EQ(value.divide(BigInt()), BigInt());
    EXPECT_EQ(value.mod(BigInt()), value);
    EXPECT_EQ(value.modPow(BigInt(3), BigInt()), BigInt());
    EXPECT_EQ(BigInt::barrettReduction(value, BigInt(), BigInt()), value);
  }
}

TEST(BigIntTest, WordOperationsTakeTheWordsAsUnsigned) {
  const BigInt a = hex("123456789ABCDEF0FEDCBA98");
  const auto single = BigInt::singleByteDivide(a, BigInt(10));
  EXPECT_EQ(single.quotient, hex("1D208A5A912E318197C790F"));
  const auto multi = BigInt::multiByteDivide(a, hex("100000001"));
  EXPECT_EQ(multi.quotient, hex("1234567888888878"));
  // The words of -1 are 2^2240 - 1.
  EXPECT_EQ(BigInt::singleByteDivide(BigInt(-1), BigInt(3)).remainder, BigInt());
  EXPECT_EQ(BigInt::singleByteDivide(BigInt(5), BigInt()).remainder, BigInt(5));

  std::array<Word, 3> words{0x80000001, 0, 7};
  EXPECT_EQ(BigInt::shiftLeft(words, 33), 3U);
  EXPECT_EQ(words, (std::array<Word, 3>{0, 2, 1}));
  EXPECT_EQ(BigInt::shiftRight(words, 31), 2U);
  EXPECT_EQ(words, (std::array<Word, 3>{4, 2, 0}));
}

TEST(BigIntTest, RandomBitsAreExactlyAsMany) {
  for (const int bits : {1, 2, 31, 32, 33, 64, 1000, 2239}) {
    BigInt value(-1);
    value.getRandomBits(bits);
    EXPECT_EQ(value.bitCount(), bits);
  }
  BigInt value;
  value.getRandomBits(2240);
  EXPECT_TRUE(value.lessThan(BigInt()));
  value.getRandomBits(-1);
  EXPECT_EQ(value, BigInt());
}

TEST(BigIntTest, BarrettReductionIsTheRemainderWhateverTheConstant) {
  const BigInt n = hex("FEDCBA9876543210FEDCBA987");
  const BigInt constant = BigInt(1).shiftLeft(256).divide(n);
  for (const BigInt& x :
       {BigInt(5), n, n.subtract(BigInt(1)), n.multiply(n), highest(), lowest()}) {
    EXPECT_EQ(BigInt::barrettReduction(x, n, constant), x.mod(n));
    EXPECT_EQ(BigInt::barrettReduction(x, n, BigInt(99)), x.mod(n));
    EXPECT_EQ(BigInt::barrettReduction(x, n, highest()), x.mod(n));
    EXPECT_EQ(BigInt::barrettReduction(x, n.negate(), constant), x.mod(n));
    EXPECT_EQ(BigInt::barrettReduction(x, highest(), BigInt()), x.mod(highest()));
  }
}

constexpr auto kInvalid = "ArithmeticException: Invalid string in constructor.";
constexpr auto kOverflow = "ArithmeticException: Positive overflow in constructor.";
constexpr auto kUnderflow = "ArithmeticException: Negative underflow in constructor.";

std::string thrownByText(const std::string& text, int radix) {
  return thrownBy([&] { BigInt value(text, radix); });
}

TEST(BigIntTest, ReadsTheDigitsOfAText) {
  const BigInt word("ffffffff", 16);
  EXPECT_EQ(word, BigInt(std::int64_t{4294967295}));
  EXPECT_EQ(word.dataLength(), 1U);
  EXPECT_EQ(word.intValue(), -1);

  const BigInt address(std::string(32, 'f'), 16);
  EXPECT_EQ(address.dataLength(), 4U);
  EXPECT_TRUE(address.greaterThan(BigInt()));

  EXPECT_EQ(BigInt("-10", 2), BigInt(-2));
  EXPECT_EQ(BigInt("zZ", 36), BigInt(35 * 36 + 35));
  EXPECT_EQ(BigInt(std::string(5000, '0').append("12"), 10), BigInt(12));
}

TEST(BigIntTest, RefusesATextThatIsNoNumber) {
  for (const std::string text : {"", "-", "1g", "g1", "--1", "1-", "+1", " 1", "0x1", "\xC3\xA9"}) {
    EXPECT_EQ(thrownByText(text, 16), kInvalid) << text;
  }
  EXPECT_EQ(thrownByText(std::string("1\0", 2), 16), kInvalid);
  EXPECT_EQ(thrownByText("2", 2), kInvalid);
}

TEST(BigIntTest, RefusesATextThatDoesNotFit) {
  const std::string half = std::string("8").append(559, '0');  // 2^2239
  EXPECT_EQ(thrownByText(half, 16), kOverflow);
  EXPECT_EQ(BigInt(std::string("-").append(half), 16), lowest());
  EXPECT_EQ(BigInt(std::string("7").append(559, 'f'), 16), highest());
  EXPECT_EQ(thrownByText(std::string("-8").append(558, '0').append("1"), 16), kUnderflow);
  EXPECT_EQ(thrownByText("-0", 10), kUnderflow);
  for (const std::size_t length : {561U, 2240U, 2241U, 1000000U}) {
    EXPECT_EQ(thrownByText(std::string(length, '9'), 16), kOverflow);
    EXPECT_EQ(thrownByText(std::string("-").append(length, '9'), 16), kUnderflow);
  }
}

}  // namespace
}  // namespace quillet
