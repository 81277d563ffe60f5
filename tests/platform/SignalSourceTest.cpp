#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <vector>

#include "platform/dispatch/MainLoop.h"
#include "platform/dispatch/SignalSource.h"

namespace platform {
namespace {

// Both sources have their signal on the way when one handler runs: the source that is destroyed
// there is not called any more.
TEST(SignalSourceTest, DeliversAsWorkOfTheLoopUnlessItHasGone) {
  std::vector<int> seen;
  std::optional<SignalSource> first;
  std::optional<SignalSource> second;
  const auto note = [&](int signal) {
    seen.push_back(signal);
    first.reset();
    second.reset();
  };
  first.emplace(std::initializer_list<int>{SIGUSR1}, note);
  second.emplace(std::initializer_list<int>{SIGUSR2}, note);
  ASSERT_EQ(std::raise(SIGUSR1), 0);
  ASSERT_EQ(std::raise(SIGUSR2), 0);
  EXPECT_THAT(seen, testing::IsEmpty());
  MainLoop::shared().runReady();
  EXPECT_THAT(seen, testing::ElementsAre(testing::AnyOf(SIGUSR1, SIGUSR2)));
}

}  // namespace
}  // namespace platform
