#include <stdexcept>
#include <thread>

#include "platform/dispatch/DispatchQueue.h"
#include "tests/platform/Test.h"

namespace platform::test {

TEST(DispatchQueueTest, TakesWorkFromManyThreadsOneAtATime) {
  constexpr int kThreads = 4;
  constexpr int kEach = 5000;
  for (const auto& queue : {DispatchQueue::global(), DispatchQueue::serial()}) {
    int count = 0;  // no lock: the queue is what guards it
    std::vector<std::jthread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
      threads.emplace_back([&] {
        for (int number = 0; number < kEach; ++number) {
          queue.async([&] {
            if (++count == kThreads * kEach) {
              MainLoop::shared().stop();
            }
          });
        }
      });
    }
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
