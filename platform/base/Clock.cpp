#include "platform/base/Clock.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>

namespace platform {

namespace {

class SystemClock final : public Clock {
 public:
  [[nodiscard]] std::int64_t microsecondsSince1970() const override {
    using std::chrono::duration_cast;
    return duration_cast<std::chrono::microseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
  }
  [[nodiscard]] std::uint64_t uptimeNanoseconds() const override {
    using std::chrono::duration_cast;
    return static_cast<std::uint64_t>(
        duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
            .count());
  }
};

std::atomic<const Clock*> sharedClock{nullptr};  // nullptr: the system's

}  // namespace

const Clock& Clock::system() {
  // Never destroyed: what runs while the process exits may still ask for the time.
  static const Clock* const clock = new SystemClock;
  return *clock;
}

const Clock& Clock::shared() {
  const Clock* const clock = sharedClock.load(std::memory_order_acquire);
  return clock != nullptr ? *clock : system();
}

void Clock::setShared(const Clock* clock) { sharedClock.store(clock, std::memory_order_release); }

void ManualClock::advanceSeconds(double seconds) {
  microsecondsSince1970_ += std::llround(seconds * 1e6);
  uptimeNanoseconds_ += static_cast<std::uint64_t>(std::llround(std::max(seconds, 0.0) * 1e9));
}

double secondsSince1970() {
  return static_cast<double>(Clock::shared().microsecondsSince1970()) / 1e6;
}

}  // namespace platform
