#include "platform/udp/SendBacklog.h"

namespace platform {

void SendBacklog::flush() {
  while (!entries_.empty()) {
    const auto error = entries_.front().send();
    if (error == noRoom()) {
      return;
    }
    const auto done = std::move(entries_.front().done);
    entries_.pop_front();
    done(error);
  }
}

void SendBacklog::fail(std::error_code error) {
  for (const auto& entry : std::exchange(entries_, {})) {
    entry.done(error);
  }
}

}  // namespace platform
