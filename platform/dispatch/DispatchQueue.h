#pragma once

#include <functional>
#include <memory>

#include "platform/log/Activity.h"

namespace platform {

class SerialQueue;
class SocketEvents;

/// A place where work runs later. Cheap to copy; every copy means the same queue.
///
/// In the provider process every queue is the one event loop of the process (`MainLoop`), so work
/// never runs beside other work and the state that it touches needs no lock. The relay process has
/// serial queues besides; state that belongs to one of them needs no lock either.
class DispatchQueue {
 public:
  /// The shared queue of default quality.
  static DispatchQueue global();

  /// A new queue with a thread of its own, which ends with the last copy. Work that blocks it
  /// delays no other queue. All that happens on it is of `activity`, whoever gives it work.
  static DispatchQueue serial(Activity::Ref activity = nullptr);

  /// Runs `work` later, never inside this call, after what was given before it; on the shared
  /// queue in the activity of the caller. Any thread may call it.
  void async(std::function<void()> work) const;

  /// Runs `work` once `seconds` have passed by the monotonic time of `Clock::shared()`, in no
  /// activity. For the shared queue, and inside the event loop only.
  void asyncAfter(double seconds, std::function<void()> work) const;

  /// Ends a serial queue: drops what has not begun, waits for what has. Not to be called by its own
  /// work.
  void stop() const;

  /// What the platform's own sockets on this queue are watched with.
  [[nodiscard]] SocketEvents& socketEvents() const;

 private:
  DispatchQueue() = default;

  std::shared_ptr<SerialQueue> serial_;  // absent: the event loop
};

}  // namespace platform
