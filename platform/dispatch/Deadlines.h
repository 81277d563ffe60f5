#pragma once

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <cstdint>
#include <functional>
#include <map>

namespace platform {

/// Work of the main loop that waits for its time, on the monotonic clock of `Clock::shared()`.
///
/// One timer of the system's waits for the earliest of it. A clock that a test has set moves
/// without that timer, so the loop's functions for tests look for themselves at what is due. Inside
/// the event loop only.
class Deadlines {
 public:
  explicit Deadlines(asio::io_context& context) : timer_(context) {}

  /// Runs `work` once `seconds` from now have passed, after what is due before it or was added
  /// before it.
  void add(double seconds, std::function<void()> work);

  /// Runs what is due, but not what that work adds. False when there was nothing.
  bool runDue();

 private:
  void arm();

  asio::steady_timer timer_;
  std::multimap<std::uint64_t, std::function<void()>> waiting_;  // by uptime in nanoseconds
};

}  // namespace platform
