#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>

namespace platform {

/// Work of the main loop that waits for its time, on the monotonic clock of `Clock::shared()`.
///
/// The loop looks at what is due in each iteration, and waits no longer than until the next is.
/// Inside the event loop only.
class Deadlines {
 public:
  /// Runs `work` once `seconds` from now have passed, after what is due before it or was added
  /// before it.
  void add(double seconds, std::function<void()> work);

  /// Runs what is due, but not what that work adds. False when there was nothing.
  bool runDue();

  /// How long there is nothing to be done; the longest time there is when nothing waits.
  [[nodiscard]] std::chrono::nanoseconds untilNext() const;

 private:
  std::multimap<std::uint64_t, std::function<void()>> waiting_;  // by uptime in nanoseconds
};

}  // namespace platform
