#include <gtest/gtest.h>

#include <limits>
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
  EXPECT_EQ(usedWords(BigInt(7)), std::vector<Word>{7});
  EXPECT_EQ(usedWords(BigInt(std::int64_t{0x1'00000002})), (std::vector<Word>{2, 1}));
  EXPECT_EQ(usedWords(BigInt(~std::uint64_t{0})), (std::vector<Word>{0xFFFFFFFF, 0xFFFFFFFF}));
  EXPECT_EQ(usedWords(BigInt(std::vector<Word>{3, 2, 1, 0})), (std::vector<Word>{3, 2, 1}));
  EXPECT_EQ(usedWords(BigInt(std::vector<Word>{})), std::vector<Word>{0});

  std::vector<Word> minusTwo(70, 0xFFFFFFFF);
  minusTwo[0] = 0xFFFFFFFE;
  EXPECT_EQ(usedWords(BigInt(-2)), minusTwo);
  EXPECT_EQ(usedWords(BigInt(std::int64_t{-2})), minusTwo);
  EXPECT_EQ(BigInt(minusTwo), BigInt(-2));
  EXPECT_EQ(BigInt(std::numeric_limits<std::int64_t>::min()), hex("-8000000000000000"));
}

TEST(BigIntTest, OverflowThrowsAndChangesNothing) {
  const BigInt high = highest();
  const BigInt low = lowest();
  const BigInt one(1);
  EXPECT_EQ(thrownBy([&] { (void)high.add(one); }), "ArithmeticException: Overflow");
  EXPECT_EQ(thrownBy([&] { (void)low.add(BigInt(-1)); }), "ArithmeticException: Overflow");
  EXPECT_EQ(thrownBy([&] { (void)low.subtract(one); }), "ArithmeticException: Overflow");
  EXPECT_EQ(thrownBy([&] { (void)BigInt().subtract(low); }), "ArithmeticException: Overflow");
  EXPECT_EQ(thrownBy([&] { (void)low.negate(); }), "ArithmeticException: Overflow in negation.");
  EXPECT_EQ(thrownBy([&] { (void)low.abs(); }), "ArithmeticException: Overflow in negation.");
  EXPECT_EQ(thrownBy([&] { (void)low.divide(BigInt(-1)); }),
            "ArithmeticException: Overflow in negation.");
  EXPECT_EQ(thrownBy([&] { (void)high.multiply(BigInt(2)); }), "ArithmeticException: overflow.");
  EXPECT_EQ(thrownBy([&] { (void)high.multiply(high); }),
            "ArithmeticException: Multiplication overflow.");
  EXPECT_EQ(high, highest());
  EXPECT_EQ(low, lowest());
}

TEST(BigIntTest, DivisionByZeroHasAnAnswer) {
  for (const BigInt& value : {BigInt(), BigInt(7), BigInt(-7), highest(), lowest()}) {
    EXPECT_EQ(value.divide(BigInt()), BigInt());
    EXPECT_EQ(value.mod(BigInt()), value);
    EXPECT_EQ(value.modPow(BigInt(3), BigInt()), BigInt());
    EXPECT_EQ(BigInt::barrettReduction(value, BigInt(), BigInt()), value);
  }
}

TEST(BigIntTest, WordDivisionsTakeTheWordsAsUnsigned) {
  const BigInt a = hex("123456789ABCDEF0FEDCBA98");
  const auto single = BigInt::singleByteDivide(a, BigInt(10));
  EXPECT_EQ(single.quotient, hex("1D208A5A912E318197C790F"));
  EXPECT_EQ(single.remainder, BigInt(2));
  const auto multi = BigInt::multiByteDivide(a, hex("100000001"));
  EXPECT_EQ(multi.quotient, hex("1234567888888878"));
  EXPECT_EQ(multi.remainder, hex("76543220"));
  const auto twin = BigInt::singleByteDivide(a, hex("100000001"));
  EXPECT_EQ(twin.quotient, multi.quotient);
  EXPECT_EQ(BigInt::multiByteDivide(a, BigInt(10)).quotient, single.quotient);
  // The words of -1 are 2^2240 - 1.
  EXPECT_EQ(BigInt::singleByteDivide(BigInt(-1), BigInt(3)).remainder, BigInt());
  EXPECT_EQ(BigInt::multiByteDivide(BigInt(5), BigInt(-1)).remainder, BigInt(5));
  EXPECT_EQ(BigInt::singleByteDivide(BigInt(5), BigInt()).remainder, BigInt(5));
}

TEST(BigIntTest, RandomBitsAreExactlyAsMany) {
  for (const int bits : {1, 2, 31, 32, 33, 64, 1000, 2239}) {
    BigInt value(-1);
    value.getRandomBits(bits);
    EXPECT_EQ(value.bitCount(), bits);
    EXPECT_EQ(value.dataLength(), static_cast<std::size_t>((bits + 31) / 32));
  }
  BigInt value(5);
  value.getRandomBits(2240);
  EXPECT_TRUE(value.lessThan(BigInt()));
  const BigInt before = value;
  EXPECT_EQ(thrownBy([&] { value.getRandomBits(2241); }),
            "ArithmeticException: Number of required bits > maxLength.");
  EXPECT_EQ(value, before);
  value.getRandomBits(-1);
  EXPECT_EQ(value, BigInt());
  BigInt other;
  other.getRandomBits(256);
  value.getRandomBits(256);
  EXPECT_NE(value, other);
}

TEST(BigIntTest, SquareRootAndPowerRefuseTheNegative) {
  EXPECT_EQ(BigInt(-4).sqrt(), BigInt());
  EXPECT_EQ(lowest().sqrt(), BigInt());
  EXPECT_EQ(thrownBy([] { (void)BigInt(2).modPow(BigInt(-1), BigInt(7)); }),
            "ArithmeticException: Positive exponents only.");
  EXPECT_EQ(thrownBy([] { (void)lowest().gcd(BigInt()); }),
            "ArithmeticException: Overflow in negation.");
}

TEST(BigIntTest, BarrettReductionIsTheRemainderWhateverTheConstant) {
  const BigInt n = hex("FEDCBA9876543210FEDCBA987");
  const BigInt constant = BigInt(1).shiftLeft(256).divide(n);
  const std::vector<BigInt> numbers = {
      BigInt(),  BigInt(5), n, n.subtract(BigInt(1)), n.multiply(n), hex("123").shiftLeft(200),
      highest(), lowest()};
  for (const BigInt& x : numbers) {
    EXPECT_EQ(BigInt::barrettReduction(x, n, constant), x.mod(n));
    EXPECT_EQ(BigInt::barrettReduction(x, n, BigInt(99)), x.mod(n));
    EXPECT_EQ(BigInt::barrettReduction(x, n, highest()), x.mod(n));
    EXPECT_EQ(BigInt::barrettReduction(x, n.negate(), constant), x.mod(n));
    EXPECT_EQ(BigInt::barrettReduction(x, highest(), BigInt()), x.mod(highest()));
  }
}

}  // namespace
}  // namespace quillet
