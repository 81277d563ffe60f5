#include <stdexcept>
#include <thread>

#include "platform/dispatch/DispatchQueue.h"
#include "tests/platform/Test.h"

namespace platform::test {
namespace {

TEST(DispatchQueueTest, TakesWorkFromManyThreadsEachInItsOrderOneAtATime) {
  constexpr int kThreads = 4;
  constexpr int kEach = 5000;
  for (const auto& queue : {DispatchQueue::global(), DispatchQueue::serial()}) {
    std::vector<int> next(kThreads, 0);  // no lock: the queue is what guards it
    int count = 0;
    bool isInOrder = true;
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
      threads.emplace_back([&, thread] {
        for (int number = 0; number < kEach; ++number) {
          queue.async([&, thread, number] {
            isInOrder = isInOrder && next[static_cast<std::size_t>(thread)]++ == number;
            if (++count == kThreads * kEach) {
              MainLoop::shared().stop();
            }
          });
        }
      });
    }
    MainLoop::shared().run();
    for (auto& thread : threads) {
      thread.join();
    }
    EXPECT_TRUE(isInOrder);
    EXPECT_EQ(count, kThreads * kEach);
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

}  // namespace
}  // namespace platform::test
