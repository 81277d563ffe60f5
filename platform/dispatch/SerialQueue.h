#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "platform/dispatch/EventLoop.h"

namespace platform {

/// One thread that runs work, each to its end, in the order in which it was given. Work that blocks
/// holds up this queue and nobody else. `DispatchQueue::serial` makes one.
class SerialQueue {
 public:
  /// What happens on it is of `activity`, which may be nullptr.
  explicit SerialQueue(Activity::Ref activity);
  /// Stops; also when work of the queue's own lets go of it last.
  ~SerialQueue();
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  /// Runs `work` later. What it throws is one log line. Any thread may call it.
  void async(std::function<void()> work);

  /// Drops what has not begun and waits for what has. Not to be called by work of the queue's own.
  void stop();

  /// What the platform's sockets on this queue are watched with; their handlers are its work.
  SocketEvents& socketEvents() { return loop_->socketEvents(); }

 private:
  const std::shared_ptr<EventLoop> loop_;  // its thread's too
  std::thread thread_;
};

}  // namespace platform
