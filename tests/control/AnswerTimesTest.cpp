#include <gtest/gtest.h>

#include "control/AnswerTimes.h"

namespace quillet {
namespace {

TEST(AnswerTimesTest, GivesTheMiddleOfTheBucketAndCountsBoundsExactly) {
  // Milliseconds, and what each must be shown as: the middle of its bucket, written by hand.
  const std::pair<double, double> rows[] = {
      {-1, 0.0005},    {0, 0.0005},    {0.001, 0.0005}, {0.0011, 0.0015}, {0.016, 0.0155},
      {0.017, 0.0165}, {0.033, 0.033}, {1.024, 1.008},  {1.0241, 1.056},  {1e12, 1082331758.592}};
  for (const auto& [milliseconds, middle] : rows) {
    AnswerTimes times;
    EXPECT_EQ(times.quantile(0.5), std::nullopt);
    times.add(milliseconds);
    EXPECT_DOUBLE_EQ(times.quantile(0.5).value(), middle) << milliseconds;
    EXPECT_EQ(times.countUpTo(4), milliseconds <= 0.016 ? 1U : 0U) << milliseconds;
    EXPECT_EQ(times.countUpTo(10), milliseconds <= 1.024 ? 1U : 0U) << milliseconds;
  }
}

TEST(AnswerTimesTest, FindsQuantilesByRank) {
  AnswerTimes times;
  for (int i = 1; i <= 100; ++i) {
    times.add(i <= 98 ? 0.002 : 0.008);
  }
  EXPECT_DOUBLE_EQ(times.quantile(0.5).value(), 0.0015);
  EXPECT_DOUBLE_EQ(times.quantile(0.98).value(), 0.0015);
  EXPECT_DOUBLE_EQ(times.quantile(0.99).value(), 0.0075);
  EXPECT_NEAR(times.sumSeconds(), 0.000212, 1e-9);
}

}  // namespace
}  // namespace quillet
