#include "platform/dispatch/DispatchQueue.h"

#include <utility>

#include "platform/dispatch/Deadlines.h"
#include "platform/dispatch/MainLoop.h"
#include "platform/dispatch/SerialQueue.h"

namespace platform {

DispatchQueue DispatchQueue::global() { return {}; }

DispatchQueue DispatchQueue::serial(Activity::Ref activity) {
  DispatchQueue queue;
  queue.serial_ = std::make_shared<SerialQueue>(std::move(activity));
  return queue;
}

void DispatchQueue::async(std::function<void()> work) const {
  if (serial_) {
    serial_->async(std::move(work));
  } else {
    MainLoop::shared().give(std::move(work));
  }
}

void DispatchQueue::asyncAfter(double seconds, std::function<void()> work) const {
  MainLoop::shared().deadlines().add(seconds, std::move(work));
}

void DispatchQueue::stop() const {
  if (serial_) {
    serial_->stop();
  }
}

SocketEvents& DispatchQueue::socketEvents() const {
  return serial_ ? serial_->socketEvents() : MainLoop::shared().socketEvents();
}

}  // namespace platform
