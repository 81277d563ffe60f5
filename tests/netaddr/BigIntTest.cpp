#include <functional>

#include "netaddr/BigInt.h"
#include "tests/netaddr/Samples.h"
#include "tests/support/Test.h"

namespace quillet::test {

using Word = BigInt::Word;

std::vector<Word> usedWords(const BigInt& value) {
  const auto words = value.getData();
  return {words.begin(), words.begin() + static_cast<std::ptrdiff_t>(value.dataLength())};
}

TEST(BigIntTest, HoldsWhatItIsMadeOf) {
  EXPECT_EQ(usedWords(BigInt()), std::vector<Word>{0});
  EXPECT_EQ(usedWords(BigInt(std::int64_t{0x1'00000002})), (std::vector<Word>{2, 1}));
  EXPECT_EQ(usedWords(BigInt(~std::uint64_t{0})), (std::vector<Word>{0xFFFFFFFF, 0xFFFFFFFF}));
  EXPECT_EQ(usedWords(BigInt(std::vector<Word>{3, 2, 1, 0})), (std::vector<Word>{3, 2, 1}));
  std::vector<Word> minusTwo(70, 0xFFFFFFFF);
  minusTwo[0] = 0xFFFFFFFE;
  EXPECT_EQ(usedWords(BigInt(-2)), minusTwo);
  EXPECT_EQ(BigInt(minusTwo), BigInt("-10", 2));
  EXPECT_EQ(BigInt("ffffffff", 16).intValue(), -1);
  EXPECT_EQ(BigInt(std::string(5000, '0').append("zZ"), 36), BigInt(35 * 36 + 35));
  EXPECT_TRUE(BigInt("1z", 100) == BigInt(135) && BigInt("00", 1) == BigInt());
}

TEST(BigIntTest, WordsCanBeSet) {
  BigInt value(6);
  value.setData(7, 2);
  value.setData(8, 1);
  value.setData(0, 60);
  value.setData(9, 70);
  EXPECT_EQ(usedWords(value), (std::vector<Word>{6, 8, 7}));
  EXPECT_TRUE(value.getDataAtIndex(1) == 8 && value.getDataAtIndex(70) == 0);
  value.setDataLength(0);
  EXPECT_TRUE(value.getData()[1] == 0 && value.dataLength() == 1);
  value.setDataLength(71);
  EXPECT_EQ(value.dataLength(), 70U);
}

TEST(BigIntTest, EveryFailureHasItsNameAndReason) {
  const BigInt high = highest();
  const BigInt one(1);
  BigInt untouched(5);
  const auto text = [](std::string digits, int radix) {
    return [digits = std::move(digits), radix] { (void)BigInt(digits, radix); };
  };
  std::vector<std::pair<std::string, std::function<void()>>> rows = {
      {"Overflow", [&] { (void)high.add(one); }},
      {"Overflow", [&] { (void)lowest().subtract(one); }},
      {"Overflow in negation.", [&] { (void)lowest().negate(); }},
      {"overflow.", [&] { (void)high.multiply(BigInt(2)); }},
      {"Multiplication overflow.", [&] { (void)high.multiply(high); }},
      {"Positive exponents only.", [&] { (void)one.modPow(BigInt(-1), high); }},
      {"Number of required bits > maxLength.", [&] { untouched.getRandomBits(2241); }},
      {"Number of required bits > maxLength.",
       [] { (void)BigInt::generatePseudoPrimeWithBits(2240, 1); }},
      {"Positive overflow in constructor.", text("8" + std::string(559, '0'), 16)},
      {"Negative underflow in constructor.", text("-8" + std::string(558, '0') + "1", 16)},
      {"Negative underflow in constructor.", text("-0", 10)},
      {"Positive overflow in constructor.", text(std::string(1000000, '9'), 16)},
      {"Invalid string in constructor.", text("2", 2)},
      {"Invalid string in constructor.", text("0", -128)},
      {"Invalid string in constructor.", text(std::string("1\0", 2), 16)}};
  for (const char* const digits : {"", "-", "1g", "--1", "+1"}) {
    rows.emplace_back("Invalid string in constructor.", text(digits, 16));
  }
  for (const auto& [reason, call] : rows) {
    EXPECT_EQ(thrownBy(call), "ArithmeticException: " + reason);
  }
  EXPECT_EQ(thrownBy([] { BigInt number(std::vector<Word>(71)); }),
            "ArithmaticException: Byte overflow in constructor");
  EXPECT_EQ(thrownBy([&] { (void)BigInt::lucasSequence(one, one, BigInt(4), high, one, 0); }),
            "ArgumentException: Argument k must be odd.");
  EXPECT_EQ(thrownBy([&] { (void)BigInt::jacobi(one, BigInt(4)); }),
            "ArgumentException: Jacobi defined only for odd integers.");
  for (const int radix : {1, 37}) {
    EXPECT_EQ(thrownBy([&] { (void)one.toStringWithRadix(radix); }),
              "ArgumentException: Radix must be >= 2 and <= 36");
  }
  EXPECT_EQ(untouched, BigInt(5));
}

TEST(BigIntTest, DivisionByZeroAndRootsOfNegativesHaveAnAnswer) {
  EXPECT_TRUE(BigInt().sqrt() == BigInt() && lowest().sqrt() == BigInt());
  for (const BigInt& value : {BigInt(), BigInt(-7), highest(), lowest()}) {
    EXPECT_EQ(value.divide(BigInt()), BigInt());
    EXPECT_EQ(value.mod(BigInt()), value);
    EXPECT_EQ(value.modPow(BigInt(3), BigInt()), BigInt());
    EXPECT_EQ(BigInt::barrettReduction(value, BigInt(), BigInt()), value);
  }
}

TEST(BigIntTest, TheLongestModulusWithOneBitHasRoom) {
  const BigInt modulus = BigInt(1).shiftLeft(34 * 64);
  EXPECT_EQ(highest().modPow(BigInt(3), modulus), modulus.subtract(BigInt(1)));
}

TEST(BigIntTest, WordOperationsTakeTheWordsAsUnsigned) {
  const BigInt a = number("123456789ABCDEF0FEDCBA98");
  EXPECT_EQ(BigInt::singleByteDivide(a, BigInt(10)).quotient, number("1D208A5A912E318197C790F"));
  EXPECT_EQ(BigInt::multiByteDivide(a, number("100000001")).quotient, number("1234567888888878"));
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
  BigInt value(-1);
  for (const int bits : {1, 31, 32, 33, 2239}) {
    value.getRandomBits(bits);
    EXPECT_EQ(value.bitCount(), bits);
  }
  value.getRandomBits(2240);
  EXPECT_TRUE(value.lessThan(BigInt()));
  value.getRandomBits(-1);
  EXPECT_EQ(value, BigInt());
}

TEST(BigIntTest, BarrettReductionIsTheRemainderWhateverTheConstant) {
  const BigInt n = number("FEDCBA9876543210FEDCBA987");
  const BigInt constant = BigInt(1).shiftLeft(256).divide(n);
  for (const BigInt& x : {BigInt(5), n, n.multiply(n), n.multiply(n).shiftLeft(60), lowest()}) {
    for (const BigInt& c : {constant, BigInt(99), highest()}) {
      EXPECT_EQ(BigInt::barrettReduction(x, n, c), x.mod(n));
      EXPECT_EQ(BigInt::barrettReduction(x, n.negate(), c), x.mod(n));
      EXPECT_EQ(BigInt::barrettReduction(x, highest(), c), x.mod(highest()));
    }
  }
  // Here the estimated quotient is too small by two.
  EXPECT_EQ(
      BigInt::barrettReduction(number(std::string(48, 'F')), number("100000000FFFFFFFF"), BigInt()),
      number("FFFFFFF900000003"));
}

}  // namespace quillet::test
