#pragma once

#include <functional>

#include "platform/base/Clock.h"
#include "platform/dispatch/MainLoop.h"
#include "tests/platform/EnvironmentVariable.h"
#include "tests/platform/Socket.h"
#include "tests/platform/TemporaryDirectory.h"
#include "tests/support/Test.h"

/// What the tests of the platform's rooms have in common. They stand in this namespace.
namespace platform::test {

using namespace quillet::test;  // NOLINT

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
struct SharedClock : ManualClock {
  explicit SharedClock(std::int64_t microseconds = 0) : ManualClock(microseconds) {
    setShared(this);
  }
  ~SharedClock() override { setShared(nullptr); }
  /// The time passes, and what is due by then is done.
  void pass(double seconds) {
    advanceSeconds(seconds);
    runReady();
  }
};

}  // namespace platform::test
