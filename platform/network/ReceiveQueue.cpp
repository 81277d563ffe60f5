#include "platform/network/ReceiveQueue.h"

#include <utility>

#include "platform/dispatch/RunGuarded.h"

namespace platform {

void ReceiveQueue::complete(Received received) {
  const auto completion = std::move(armed_.front());
  armed_.pop_front();
  if (completion) {
    runGuarded([&] { completion(std::move(received.content), !received.error, received.error); });
  }
}

void ReceiveQueue::completeWithHeld() {
  auto received = std::move(held_.front());
  held_.pop_front();
  complete(std::move(received));
}

}  // namespace platform
