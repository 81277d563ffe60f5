#include "platform/dispatch/Timer.h"

#include <cstdint>
#include <utility>

#include "platform/dispatch/DispatchQueue.h"

namespace platform {

/// What is to happen. The queue holds it weakly, so that it ends with its timer.
class Timer::Firing : public std::enable_shared_from_this<Firing> {
 public:
  Firing(double seconds, bool repeats, std::function<void()> block)
      : seconds_(seconds), repeats_(repeats), block_(std::move(block)) {}

  void schedule() {
    DispatchQueue::global().asyncAfter(seconds_, [weak = weak_from_this()] {
      if (const auto self = weak.lock()) {
        self->fire();
      }
    });
  }

  [[nodiscard]] bool isPending() const { return isPending_; }

 private:
  void fire() {
    isPending_ = repeats_;
    if (repeats_) {
      schedule();
    }
    block_();
  }

  const double seconds_;
  const bool repeats_;
  const std::function<void()> block_;
  bool isPending_ = true;
};

Timer Timer::scheduled(double seconds, bool repeats, std::function<void()> block) {
  Timer timer;
  timer.firing_ = std::make_shared<Firing>(seconds, repeats, std::move(block));
  timer.firing_->schedule();
  return timer;
}

bool Timer::isValid() const { return firing_ && firing_->isPending(); }

}  // namespace platform
