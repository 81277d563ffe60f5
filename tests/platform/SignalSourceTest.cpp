#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <vector>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/dispatch/MainLoop.h"
#include "platform/dispatch/SignalSource.h"

namespace platform {
namespace {

using testing::ElementsAre;

TEST(SignalSourceTest, DeliversSignalsAsWorkOfTheLoop) {
  std::vector<int> seen;
  const SignalSource source({SIGUSR1, SIGUSR2}, [&](int signal) { seen.push_back(signal); });
  ASSERT_EQ(std::raise(SIGUSR1), 0);
  EXPECT_THAT(seen, ElementsAre());
  ASSERT_TRUE(MainLoop::shared().runUntil([&] { return seen.size() == 1; }));
  ASSERT_EQ(std::raise(SIGUSR2), 0);
  ASSERT_TRUE(MainLoop::shared().runUntil([&] { return seen.size() == 2; }));
  EXPECT_THAT(seen, ElementsAre(SIGUSR1, SIGUSR2));
}

TEST(SignalSourceTest, ASourceThatHasGoneDeliversNothing) {
  int calls = 0;
  auto source =
      std::make_unique<SignalSource>(std::initializer_list<int>{SIGUSR2}, [&](int) { ++calls; });
  // Both have their signal on the way when one handler runs: the source that is destroyed there is
  // not called any more.
  std::unique_ptr<SignalSource> other;
  other = std::make_unique<SignalSource>(std::initializer_list<int>{SIGUSR1}, [&](int) {
    ++calls;
    source.reset();
    other.reset();
  });
  ASSERT_EQ(std::raise(SIGUSR1), 0);
  MainLoop::shared().runReady();
  ASSERT_EQ(std::raise(SIGUSR1), 0);
  ASSERT_EQ(std::raise(SIGUSR2), 0);
  MainLoop::shared().runReady();
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace platform
