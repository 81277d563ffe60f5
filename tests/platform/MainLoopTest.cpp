#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/dispatch/MainLoop.h"
#include "platform/dispatch/WatchedSocket.h"
#include "platform/foundation/NSLog.h"
#include "tests/platform/Pipe.h"
#include "tests/support/LogCapture.h"

namespace platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MainLoopTest : public testing::Test {
 protected:
  static void later(std::function<void()> work) { DispatchQueue::global().async(std::move(work)); }
  void noteLater(int number) {
    later([this, number] { noted_.push_back(number); });
  }

  MainLoop& loop_ = MainLoop::shared();
  std::vector<int> noted_;
};

TEST_F(MainLoopTest, RunsWorkLaterInTheOrderGiven) {
  later([this] {
    noteLater(3);
    noted_.push_back(1);
  });
  noteLater(2);
  EXPECT_THAT(noted_, IsEmpty());
  loop_.runReady();
  EXPECT_THAT(noted_, ElementsAre(1, 2, 3));
}

TEST_F(MainLoopTest, StopEndsAfterTheHandlerThatIsRunning) {
  later([this] {
    noteLater(3);
    loop_.stop();
    noted_.push_back(1);
  });
  noteLater(2);
  loop_.run();
  EXPECT_THAT(noted_, ElementsAre(1));
  later([this] { loop_.stop(); });
  loop_.run();
  EXPECT_THAT(noted_, ElementsAre(1, 2, 3));
}

TEST_F(MainLoopTest, StopsUnderLoadWhichAnotherThreadAsksFor) {
  std::atomic<int> turns{0};
  bool isOver = false;
  std::function<void()> endless = [&] {
    ++turns;
    if (!isOver) {
      later(endless);
    }
  };
  for (int i = 0; i < 100; ++i) {
    later(endless);
  }
  std::thread other([&] {
    while (turns < 1000) {
      std::this_thread::yield();
    }
    loop_.stop();
  });
  loop_.run();
  other.join();
  EXPECT_GE(turns, 1000);
  isOver = true;
  loop_.runReady();
}

TEST_F(MainLoopTest, TakesWorkFromManyThreadsEachInItsOrder) {
  constexpr int kThreads = 4;
  constexpr int kEach = 5000;
  std::vector<int> next(kThreads, 0);
  bool isInOrder = true;
  int count = 0;
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (int number = 0; number < kEach; ++number) {
        later([&, thread, number] {
          isInOrder = isInOrder && next[static_cast<std::size_t>(thread)]++ == number;
          if (++count == kThreads * kEach) {
            loop_.stop();
          }
        });
      }
    });
  }
  loop_.run();
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_TRUE(isInOrder);
  EXPECT_EQ(count, kThreads * kEach);
}

TEST_F(MainLoopTest, GoesOnWhenAHandlerThrows) {
  const quillet::test::LogCapture log;
  later([] { throw std::runtime_error("first"); });
  later([] { throw 2; });
  later(nullptr);
  later([this] {
    noted_.push_back(1);
    loop_.stop();
  });
  loop_.run();
  EXPECT_THAT(noted_, ElementsAre(1));
  EXPECT_THAT(log.records(),
              testing::UnorderedElementsAre(
                  "MainLoop: a handler has thrown: first",
                  "MainLoop: a handler has thrown: something that is no std::exception",
                  "MainLoop: a handler has thrown: bad_function_call"));
}

/// Keeps what is written and when it is handed on.
struct FlushSink : LogSink {
  void write(std::string_view text) override {
    events.push_back((LogBatch::isActive() ? "held " : "alone ") + std::string(text));
  }
  void flush() override {
    if (!events.empty() && events.back() != "flush") {
      events.emplace_back("flush");
      ++flushes;
    }
  }
  std::vector<std::string> events;
  std::atomic<int> flushes{0};
};

TEST_F(MainLoopTest, WritesTheRecordsOfOneTurnTogetherBeforeItWaits) {
  auto owned = std::make_unique<FlushSink>();
  auto& sink = *owned;
  LogSink::setShared(std::move(owned));
  later([] {
    NSLog("a");
    later([] { NSLog("c"); });
  });
  later([] { NSLog("b"); });
  std::thread other([&] {
    while (sink.flushes == 0) {
      std::this_thread::yield();
    }
    later([this] {
      NSLog("d");
      loop_.stop();
    });
  });
  loop_.run();
  other.join();
  EXPECT_THAT(sink.events, ElementsAre("held a", "held b", "held c", "flush", "held d", "flush"));
  LogSink::setShared(nullptr);
}

}  // namespace
}  // namespace platform
