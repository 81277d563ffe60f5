#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "platform/base/Clock.h"
#include "platform/dispatch/DispatchQueue.h"
#include "platform/dispatch/MainLoop.h"
#include "platform/dispatch/Timer.h"

namespace platform {
namespace {

using testing::ElementsAre;

class TimerTest : public testing::Test {
 protected:
  TimerTest() { Clock::setShared(&clock_); }
  ~TimerTest() override { Clock::setShared(nullptr); }

  void pass(double seconds) {
    clock_.advanceSeconds(seconds);
    MainLoop::shared().runReady();
  }
  void after(double seconds, int number) {
    DispatchQueue::global().asyncAfter(seconds, [this, number] {
      done_.push_back(number);
      if (number == 1) {
        after(10, 5);
      }
    });
  }

  ManualClock clock_;
  std::vector<int> done_;
};

TEST_F(TimerTest, WorkIsDoneWhenItIsDueAndInOrder) {
  after(1e300, 6);  // never, but no harm
  after(3, 3);
  after(1, 1);
  after(3, 4);
  after(2, 2);
  after(-5, 0);
  EXPECT_THAT(done_, ElementsAre());
  pass(0.999);
  EXPECT_THAT(done_, ElementsAre(0));
  pass(0.001);
  EXPECT_THAT(done_, ElementsAre(0, 1));
  pass(9);
  EXPECT_THAT(done_, ElementsAre(0, 1, 2, 3, 4));
  pass(1e6);
  EXPECT_THAT(done_, ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST_F(TimerTest, FiresOnceOrAgainAndAgain) {
  const auto once = Timer::scheduled(2, false, [this] { done_.push_back(1); });
  const auto again = Timer::scheduled(3, true, [this] { done_.push_back(2); });
  EXPECT_TRUE(once.isValid());
  for (int second = 0; second < 9; ++second) {
    pass(1);
  }
  EXPECT_THAT(done_, ElementsAre(1, 2, 2, 2));
  EXPECT_FALSE(once.isValid());
  EXPECT_TRUE(again.isValid());
  pass(300);
  EXPECT_THAT(done_, ElementsAre(1, 2, 2, 2, 2)) << "missed firings count as one";
}

TEST_F(TimerTest, FiresNoMoreWhenInvalidatedOrGone) {
  auto invalidated = Timer::scheduled(1, true, [this] { done_.push_back(1); });
  std::optional gone = Timer::scheduled(1, true, [this] { done_.push_back(2); });
  auto itself = Timer();
  itself = Timer::scheduled(1, true, [&] {
    done_.push_back(3);
    itself.invalidate();
    gone.reset();
  });
  invalidated.invalidate();
  pass(1);
  pass(1);
  EXPECT_THAT(done_, ElementsAre(2, 3));
  EXPECT_FALSE(itself.isValid());
}

}  // namespace
}  // namespace platform
