#include "platform/dispatch/DispatchQueue.h"
#include "platform/dispatch/Timer.h"
#include "tests/platform/Test.h"

namespace platform::test {

class TimerTest : public testing::Test {
 protected:
  std::function<void()> note(int number) {
    return [this, number] { done_.push_back(number); };
  }
  static void after(double seconds, const std::function<void()>& work) {
    DispatchQueue::global().asyncAfter(seconds, work);
  }

  SharedClock clock_;
  std::vector<int> done_;
};

TEST_F(TimerTest, WorkIsDoneWhenItIsDueAndInOrder) {
  after(1e300, note(6));  // never, but no harm
  after(3, note(3));
  after(1, [this] { after(10, note(5)); });
  after(3, note(4));
  after(2, note(2));
  after(-5, note(0));
  EXPECT_THAT(done_, ElementsAre());
  clock_.pass(1.999);
  EXPECT_THAT(done_, ElementsAre(0));
  clock_.pass(0.001);
  EXPECT_THAT(done_, ElementsAre(0, 2));
  clock_.pass(9.998);
  EXPECT_THAT(done_, ElementsAre(0, 2, 3, 4));
  clock_.pass(1e6);
  EXPECT_THAT(done_, ElementsAre(0, 2, 3, 4, 5));
}

TEST_F(TimerTest, FiresOnceOrAgainAndAgain) {
  const auto once = Timer::scheduled(2, false, note(1));
  const auto again = Timer::scheduled(3, true, note(2));
  EXPECT_TRUE(once.isValid());
  for (int second = 0; second < 9; ++second) {
    clock_.pass(1);
  }
  EXPECT_THAT(done_, ElementsAre(1, 2, 2, 2));
  EXPECT_FALSE(once.isValid());
  EXPECT_TRUE(again.isValid());
  clock_.pass(300);
  EXPECT_THAT(done_, ElementsAre(1, 2, 2, 2, 2)) << "missed firings count as one";
}

TEST_F(TimerTest, FiresNoMoreWhenInvalidatedOrGone) {
  std::optional gone = Timer::scheduled(1, true, note(1));
  Timer itself;
  itself = Timer::scheduled(1, true, [&] {
    done_.push_back(2);
    itself.invalidate();
    gone.reset();
  });
  clock_.pass(1);
  clock_.pass(1);
  EXPECT_THAT(done_, ElementsAre(1, 2));
  EXPECT_FALSE(itself.isValid());
}

}  // namespace platform::test
