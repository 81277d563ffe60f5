#include <gtest/gtest.h>

#include <future>
#include <stdexcept>
#include <thread>
#include <vector>

#include "platform/dispatch/DispatchQueue.h"
#include "tests/support/LogCapture.h"

namespace platform {
namespace {

/// Waits until everything that `queue` was given has run.
void drain(const DispatchQueue& queue) {
  std::promise<void> done;
  queue.async([&done] { done.set_value(); });
  done.get_future().wait();
}

TEST(SerialQueueTest, RunsWorkInItsOrderOneAtATime) {
  const auto queue = DispatchQueue::serial();
  std::vector<int> ran;  // no lock: the queue is what guards it
  std::vector<std::thread> givers;
  givers.reserve(4);
  for (int giver = 0; giver < 4; ++giver) {
    givers.emplace_back([&queue, &ran, giver] {
      for (int i = 0; i < 1000; ++i) {
        queue.async([&ran, giver, i] { ran.push_back(giver * 1000 + i); });
      }
    });
  }
  for (auto& giver : givers) {
    giver.join();
  }
  drain(queue);
  ASSERT_EQ(ran.size(), 4000U);
  std::vector<int> last(4, -1);
  for (const int number : ran) {
    auto& before = last[static_cast<std::size_t>(number / 1000)];
    EXPECT_LT(before, number);
    before = number;
  }
}

TEST(SerialQueueTest, BlockedWorkDelaysNoOtherQueue) {
  const auto blocked = DispatchQueue::serial();
  const auto other = DispatchQueue::serial();
  std::promise<void> release;
  blocked.async([&release] { release.get_future().wait(); });
  drain(other);
  release.set_value();
  drain(blocked);
}

TEST(SerialQueueTest, WhatItsOwnWorkGivesKeepsItsPlace) {
  const auto queue = DispatchQueue::serial();
  for (int round = 0; round < 2000; ++round) {
    std::promise<void> given;
    bool hasRun = false;
    queue.async([&] {
      queue.async([&hasRun] { hasRun = true; });
      given.set_value();
    });
    given.get_future().wait();
    bool wasBefore = false;
    std::promise<void> over;
    queue.async([&] {
      wasBefore = hasRun;
      over.set_value();
    });
    over.get_future().wait();
    ASSERT_TRUE(wasBefore) << round;
  }
}

TEST(SerialQueueTest, WorkThatThrowsIsOneLine) {
  const quillet::test::LogCapture log;
  const auto queue = DispatchQueue::serial();
  queue.async([] { throw std::runtime_error("oh"); });
  drain(queue);
  EXPECT_EQ(log.records().size(), 1U);
}

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

}  // namespace
}  // namespace platform
