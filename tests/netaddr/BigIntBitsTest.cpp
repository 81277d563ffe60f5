#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "netaddr/BigInt.h"
#include "tests/netaddr/BigIntSamples.h"

namespace quillet {
namespace {

using Word = BigInt::Word;

TEST(BigIntBitsTest, ShiftsByAnyAmount) {
  const int huge = std::numeric_limits<int>::max();
  for (const int amount : {2240, 2241, huge}) {
    EXPECT_EQ(highest().shiftLeft(amount), BigInt());
    EXPECT_EQ(highest().shiftRight(amount), BigInt());
    EXPECT_EQ(BigInt(-7).shiftRight(amount), BigInt(-1));
    EXPECT_EQ(BigInt(-7).shiftLeft(amount), BigInt());
  }
  for (const int amount : {0, -1, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(BigInt(-7).shiftLeft(amount), BigInt(-7));
    EXPECT_EQ(BigInt(-7).shiftRight(amount), BigInt(-7));
  }
  EXPECT_EQ(BigInt(1).shiftLeft(2239).shiftRight(2239), BigInt(-1));
}

TEST(BigIntBitsTest, ShiftsABufferInPlace) {
  std::vector<Word> words = {0x80000001, 0xC0000000, 0};
  EXPECT_EQ(BigInt::shiftLeft(words, 33), 3U);
  EXPECT_EQ(words, (std::vector<Word>{0, 2, 0x80000001}));
  EXPECT_EQ(BigInt::shiftLeft(words, 1), 3U);
  EXPECT_EQ(words, (std::vector<Word>{0, 4, 2}));
  EXPECT_EQ(BigInt::shiftRight(words, 65), 1U);
  EXPECT_EQ(words, (std::vector<Word>{1, 0, 0}));
  EXPECT_EQ(BigInt::shiftRight(words, -5), 1U);
  EXPECT_EQ(words, (std::vector<Word>{1, 0, 0}));
  EXPECT_EQ(BigInt::shiftLeft(words, 96), 1U);
  EXPECT_EQ(words, (std::vector<Word>{0, 0, 0}));
  EXPECT_EQ(BigInt::shiftLeft(std::span<Word>(), 5), 0U);
}

}  // namespace
}  // namespace quillet
