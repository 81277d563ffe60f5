#include <future>
#include <thread>

#include "platform/dispatch/DispatchQueue.h"
#include "tests/platform/Test.h"

namespace platform::test {

TEST(SerialQueueTest, StoppingWaitsForWhatHasBegunAndRunsNothingMore) {
  const auto queue = DispatchQueue::serial();
  std::promise<void> begun;
  std::promise<void> mayEnd;
  bool hasEnded = false;
  bool hasRunMore = false;
  queue.async([&] {
    begun.set_value();
    mayEnd.get_future().wait();
    hasEnded = true;
  });
  begun.get_future().wait();
  std::thread other([&] { mayEnd.set_value(); });
  queue.stop();
  EXPECT_TRUE(hasEnded);
  queue.async([&] { hasRunMore = true; });
  queue.stop();
  other.join();
  EXPECT_FALSE(hasRunMore);
}

TEST(SerialQueueTest, MayBeLetGoOfByItsOwnWork) {
  std::promise<void> isLast;
  std::promise<void> over;
  {
    const auto queue = DispatchQueue::serial();
    queue.async([&, kept = std::make_shared<DispatchQueue>(queue)]() mutable {
      isLast.get_future().wait();
      kept.reset();
      over.set_value();
    });
  }
  isLast.set_value();
  over.get_future().wait();
}

}  // namespace platform::test
