#include "platform/dispatch/DispatchQueue.h"

#include <utility>

#include "platform/dispatch/Deadlines.h"
#include "platform/dispatch/MainLoop.h"

namespace platform {

DispatchQueue DispatchQueue::global() { return {}; }

void DispatchQueue::async(std::function<void()> work) const {
  MainLoop::shared().give(std::move(work));
}

void DispatchQueue::asyncAfter(double seconds, std::function<void()> work) const {
  MainLoop::shared().deadlines().add(seconds, std::move(work));
}

}  // namespace platform
