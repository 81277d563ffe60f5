#pragma once

#include <functional>
#include <memory>

namespace platform {

/// Runs a block again and again, or once, on the main loop, by the time of `Clock::shared()`. A
/// timer that goes away is invalidated. Inside the event loop only.
class Timer {
 public:
  /// A timer that is not scheduled and never fires.
  Timer() = default;

  /// Fires after `seconds` (more than 0), and every `seconds` from then on if it `repeats`. Firings
  /// that were missed while the loop was busy or the machine slept count as one.
  static Timer scheduled(double seconds, bool repeats, std::function<void()> block);

  /// It fires no more, not even when it is due already.
  void invalidate() { firing_.reset(); }

  /// Whether it will fire.
  [[nodiscard]] bool isValid() const;

 private:
  class Firing;

  std::shared_ptr<Firing> firing_;
};

}  // namespace platform
