#include "platform/dispatch/WatchedSocket.h"

#include "platform/dispatch/SocketEvents.h"

namespace platform {

void WatchedSocket::close() {
  if (interest_ != SocketInterest{}) {
    events_->forget(socket_.get());
    interest_ = {};
  }
  socket_ = FileDescriptor();
}

std::error_code WatchedSocket::watch(SocketWatcher& watcher, SocketInterest interest,
                                     const DispatchQueue& queue) {
  if (!isOpen()) {
    return std::make_error_code(std::errc::bad_file_descriptor);
  }
  if (interest == interest_) {
    return {};
  }
  events_ = &queue.socketEvents();
  std::error_code error;
  if (interest == SocketInterest{}) {
    events_->stopWatching(socket_.get());
  } else {
    error = events_->watch(socket_.get(), watcher, interest, interest_ != SocketInterest{});
  }
  if (!error) {
    interest_ = interest;
  }
  return error;
}

}  // namespace platform
