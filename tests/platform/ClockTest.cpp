#include <gtest/gtest.h>

#include <ctime>

#include "platform/foundation/Clock.h"

namespace platform {
namespace {

TEST(ClockTest, systemClockShowsTheSystemsTime) {
  const auto before = std::time(nullptr);
  const std::int64_t shown = Clock::system().microsecondsSince1970() / 1'000'000;
  EXPECT_LE(before - 1, shown);  // time() may lag by a tick
  EXPECT_LE(shown, std::time(nullptr) + 1);
  const auto first = DispatchTime::now();
  EXPECT_LE(first.uptimeNanoseconds, DispatchTime::now().uptimeNanoseconds);
}

TEST(ClockTest, manualClockMovesWhenTold) {
  ManualClock clock(1'000'000);
  Clock::setShared(&clock);
  EXPECT_EQ(secondsSince1970(), 1.0);
  clock.advanceSeconds(0.3);
  EXPECT_EQ(Clock::shared().microsecondsSince1970(), 1'300'000);
  EXPECT_EQ(DispatchTime::now().uptimeNanoseconds, 300'000'000U);
  clock.advanceSeconds(-1.5);
  EXPECT_EQ(Clock::shared().microsecondsSince1970(), -200'000);
  EXPECT_EQ(DispatchTime::now().uptimeNanoseconds, 300'000'000U);
  Clock::setShared(nullptr);
  EXPECT_EQ(&Clock::shared(), &Clock::system());
}

}  // namespace
}  // namespace platform
