#pragma once

#include <functional>
#include <memory>

namespace platform {

/// A place where work runs later. Cheap to copy; every copy means the same queue.
///
/// In the provider process every queue is the one event loop of the process (`MainLoop`), so work
/// never runs beside other work and the state that it touches needs no lock.
class DispatchQueue {
 public:
  /// The shared queue of default quality.
  static DispatchQueue global();

  /// Runs `work` later, never inside this call, after what was given before it. Any thread may call
  /// it.
  void async(std::function<void()> work) const;

 private:
  DispatchQueue() = default;
};

}  // namespace platform
