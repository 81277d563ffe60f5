#include "platform/dispatch/WatchedSocket.h"

#include "platform/dispatch/MainLoop.h"
#include "platform/dispatch/SocketEvents.h"

namespace platform {

void WatchedSocket::close() {
  if (interest_ != SocketInterest{}) {
    MainLoop::shared().socketEvents().forget(socket_.get());
    interest_ = {};
  }
  socket_ = FileDescriptor();
}

std::error_code WatchedSocket::watch(SocketWatcher& watcher, SocketInterest interest) {
  if (!isOpen()) {
    return std::make_error_code(std::errc::bad_file_descriptor);
  }
  if (interest == interest_) {
    return {};
  }
  auto& events = MainLoop::shared().socketEvents();
  std::error_code error;
  if (interest == SocketInterest{}) {
    events.stopWatching(socket_.get());
  } else {
    error = events.watch(socket_.get(), watcher, interest, interest_ != SocketInterest{});
  }
  if (!error) {
    interest_ = interest;
  }
  return error;
}

}  // namespace platform
