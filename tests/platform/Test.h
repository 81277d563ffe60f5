#pragma once

#include <atomic>
#include <cmath>
#include <functional>

#include "platform/base/Clock.h"
#include "platform/dispatch/MainLoop.h"
#include "tests/platform/EnvironmentVariable.h"
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

/// The shared clock while it lives; it moves when it is told to. Any thread may read it.
class SharedClock final : public Clock {
 public:
  explicit SharedClock(std::int64_t microseconds = 0) : microseconds_(microseconds) {
    setShared(this);
  }
  ~SharedClock() override { setShared(nullptr); }
  [[nodiscard]] std::int64_t microsecondsSince1970() const override { return microseconds_; }
  [[nodiscard]] std::uint64_t uptimeNanoseconds() const override { return uptime_; }
  void advanceSeconds(double seconds) {
    microseconds_ += std::llround(seconds * 1e6);
    uptime_ += static_cast<std::uint64_t>(std::llround(std::max(seconds, 0.0) * 1e9));
  }
  /// The time passes, and what is due by then is done.
  void pass(double seconds) {
    advanceSeconds(seconds);
    runReady();
  }

 private:
  std::atomic<std::int64_t> microseconds_;
  std::atomic<std::uint64_t> uptime_{1};
};

}  // namespace platform::test
