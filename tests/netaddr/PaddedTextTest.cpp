#include <gtest/gtest.h>

#include "netaddr/PaddedText.h"

namespace quillet {
namespace {

TEST(PaddedTextTest, PadsOnTheLeft) {
  EXPECT_EQ(stringByPaddingLeftToLength("abc", 8, "0"), "00000abc");
  EXPECT_EQ(stringByPaddingLeftToLength("abc", 8, "xy"), "xyxyxabc");
  EXPECT_EQ(stringByPaddingLeftToLength("abc", 4, "xyz"), "xabc");
  EXPECT_EQ(stringByPaddingLeftToLength("abc", 3, "0"), "abc");
  EXPECT_EQ(stringByPaddingLeftToLength("abc", 0, "0"), "abc");
  EXPECT_EQ(stringByPaddingLeftToLength("abc", 8, ""), "abc");
  EXPECT_EQ(stringByPaddingLeftToLength("", 2, "0"), "00");
}

}  // namespace
}  // namespace quillet
