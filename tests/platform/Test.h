#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/base/Clock.h"
#include "platform/base/Data.h"
#include "platform/base/Description.h"
#include "platform/dispatch/MainLoop.h"
#include "tests/support/LogCapture.h"

/// What the tests of the platform's rooms have in common. They stand in this namespace.
namespace platform::test {

using quillet::test::LogCapture;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using Texts = std::vector<std::string>;

/// Runs what is ready now.
inline void runReady() { MainLoop::shared().runReady(); }

/// Runs the main loop until `done`; false when that takes too long.
inline bool runUntil(const std::function<bool()>& done) {
  return MainLoop::shared().runUntil(done);
}

/// The same until `list` has `count` entries.
template <class List>
bool runUntilSize(const List& list, std::size_t count) {
  return runUntil([&] { return list.size() >= count; });
}

/// The shared clock while it lives; it moves when it is told to.
class SharedClock {
 public:
  explicit SharedClock(std::int64_t microsecondsSince1970 = 0) : clock_(microsecondsSince1970) {
    Clock::setShared(&clock_);
  }
  ~SharedClock() { Clock::setShared(nullptr); }
  void advanceSeconds(double seconds) { clock_.advanceSeconds(seconds); }

 private:
  ManualClock clock_;
};

}  // namespace platform::test
