#include "platform/foundation/Clock.h"

#include <atomic>
#include <chrono>

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

const SystemClock kSystemClock;
std::atomic<const Clock*> sharedClock{&kSystemClock};

}  // namespace

const Clock& Clock::shared() { return *sharedClock.load(std::memory_order_acquire); }

void Clock::setShared(const Clock* clock) {
  sharedClock.store(clock != nullptr ? clock : &kSystemClock, std::memory_order_release);
}

void ManualClock::advanceSeconds(double seconds) {
  microsecondsSince1970_ += static_cast<std::int64_t>(seconds * 1e6);
  uptimeNanoseconds_ += static_cast<std::uint64_t>(seconds * 1e9);
}

double secondsSince1970() {
  return static_cast<double>(Clock::shared().microsecondsSince1970()) / 1e6;
}

}  // namespace platform
