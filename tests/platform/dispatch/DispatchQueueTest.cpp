#include <stdexcept>
#include <thread>

#include "platform/dispatch/DispatchQueue.h"
#include "tests/platform/Test.h"

namespace platform::test {

TEST(DispatchQueueTest, TakesWorkFromManyThreadsOneAtATime) {
  constexpr int kEach = 5000;
  for (const auto& queue : {DispatchQueue::global(), DispatchQueue::serial()}) {
    int left = 4 * kEach;  // no lock: the queue is what guards it
    const auto work = [&] {
      if (--left == 0) {
        MainLoop::shared().stop();
      }
    };
    const auto giveWork = [&] {
      for (int number = 0; number < kEach; ++number) {
        queue.async(work);
      }
    };
    const std::jthread threads[] = {std::jthread(giveWork), std::jthread(giveWork),
                                    std::jthread(giveWork), std::jthread(giveWork)};
    MainLoop::shared().run();
  }
}

TEST(DispatchQueueTest, GoesOnWhenItsWorkThrows) {
  for (const auto& queue : {DispatchQueue::global(), DispatchQueue::serial()}) {
    const LogCapture log;
    queue.async([] { throw std::runtime_error("first"); });
    queue.async([] { throw 2; });
    queue.async(nullptr);
    queue.async([] { MainLoop::shared().stop(); });
    MainLoop::shared().run();
    EXPECT_THAT(log.records(),
                ElementsAre("MainLoop: a handler has thrown: first",
                            "MainLoop: a handler has thrown: something that is no std::exception",
                            "MainLoop: a handler has thrown: bad_function_call"));
  }
}

}  // namespace platform::test
