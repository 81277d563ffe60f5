#pragma once

#include <atomic>
#include <cstdint>

namespace platform {

/// Where the time comes from. Nothing but the system clock's own implementation reads the operating
/// system's time, so a test that sets a clock of its own decides when time moves.
class Clock {
 public:
  Clock() = default;
  Clock(const Clock&) = delete;
  Clock& operator=(const Clock&) = delete;
  virtual ~Clock() = default;

  /// Microseconds since 1 January 1970, UTC.
  [[nodiscard]] virtual std::int64_t microsecondsSince1970() const = 0;
  /// Nanoseconds of a clock that only ever moves forward.
  [[nodiscard]] virtual std::uint64_t uptimeNanoseconds() const = 0;

  /// The system's clock, whichever is in use: for what is set against times that the kernel gave,
  /// such as those of files.
  static const Clock& system();
  /// The clock in use: the system's, unless `setShared` gave another.
  static const Clock& shared();
  /// Puts `clock` in use, or the system's again for nullptr. The caller keeps it alive meanwhile;
  /// to be called while no other thread runs.
  static void setShared(const Clock* clock);
};

/// A clock that stands still until it is told to move. Any thread may read it.
class ManualClock : public Clock {
 public:
  explicit ManualClock(std::int64_t microsecondsSince1970 = 0)
      : microsecondsSince1970_(microsecondsSince1970) {}

  [[nodiscard]] std::int64_t microsecondsSince1970() const override {
    return microsecondsSince1970_;
  }
  [[nodiscard]] std::uint64_t uptimeNanoseconds() const override { return uptimeNanoseconds_; }

  /// Moves both times on; a negative number sets the time of day back and leaves the other.
  void advanceSeconds(double seconds);

 private:
  std::atomic<std::int64_t> microsecondsSince1970_;
  std::atomic<std::uint64_t> uptimeNanoseconds_ = 0;
};

/// Seconds since 1 January 1970 of the shared clock.
double secondsSince1970();

/// A point on the monotonic clock.
struct DispatchTime {
  std::uint64_t uptimeNanoseconds = 0;

  static DispatchTime now() { return {Clock::shared().uptimeNanoseconds()}; }
};

}  // namespace platform
