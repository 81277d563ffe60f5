#include "platform/dispatch/DispatchQueue.h"

#include <utility>

#include "platform/dispatch/MainLoop.h"

namespace platform {

DispatchQueue DispatchQueue::global() { return {}; }

void DispatchQueue::async(std::function<void()> work) const {
  MainLoop::shared().give(std::move(work));
}

}  // namespace platform
