#include <gtest/gtest.h>

#include <string>

#include "netaddr/BigInt.h"
#include "tests/netaddr/BigIntSamples.h"
#include "tests/netaddr/Thrown.h"

namespace quillet {
namespace {

constexpr auto kInvalid = "ArithmeticException: Invalid string in constructor.";
constexpr auto kOverflow = "ArithmeticException: Positive overflow in constructor.";
constexpr auto kUnderflow = "ArithmeticException: Negative underflow in constructor.";

std::string thrownByText(const std::string& text, int radix) {
  return thrownBy([&] { BigInt value(text, radix); });
}

TEST(BigIntTextTest, ReadsDigits) {
  const BigInt word("ffffffff", 16);
  EXPECT_EQ(word, BigInt(std::int64_t{4294967295}));
  EXPECT_EQ(word.dataLength(), 1U);
  EXPECT_EQ(word.intValue(), -1);

  const BigInt address(std::string(32, 'f'), 16);
  EXPECT_EQ(address.dataLength(), 4U);
  EXPECT_TRUE(address.greaterThan(BigInt()));
  EXPECT_EQ(address.toStringWithRadix(16), std::string(32, 'F'));

  EXPECT_EQ(BigInt("-10", 2), BigInt(-2));
  EXPECT_EQ(BigInt("zZ", 36), BigInt(35 * 36 + 35));
  EXPECT_EQ(BigInt(std::string(5000, '0').append("12"), 10), BigInt(12));
}

TEST(BigIntTextTest, RefusesWhatIsNoNumber) {
  for (const std::string text : {"", "-", "1g", "g1", "--1", "1-", "+1", " 1", "0x1", "\xC3\xA9"}) {
    EXPECT_EQ(thrownByText(text, 16), kInvalid) << text;
  }
  EXPECT_EQ(thrownByText(std::string("1\0", 2), 16), kInvalid);
  EXPECT_EQ(thrownByText("2", 2), kInvalid);
}

TEST(BigIntTextTest, RefusesWhatDoesNotFit) {
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
