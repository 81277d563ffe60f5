#pragma once

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <atomic>
#include <cstdint>
#include <system_error>
#include <vector>

#include "platform/dispatch/WatchedSocket.h"

namespace platform {

/// The sockets that the main loop watches: one epoll set of their own, whose descriptor the loop
/// waits for. So a socket costs one system call to be watched and none to stay or to go.
///
/// The set gives back a descriptor's number with the count of uses that the number has had, never a
/// pointer: what is left of a socket closed meanwhile (in the events fetched before, or in a child
/// process that has not executed its program yet) finds nobody. Inside the event loop only.
class SocketEvents {
 public:
  /// `isStopping` ends the handing out of events after the watcher that is being called.
  SocketEvents(asio::io_context& context, const std::atomic<bool>& isStopping);

  /// Sets what `watcher` is told of `socket`; `isKnown` when it was told of some of it before.
  std::error_code watch(int socket, SocketWatcher& watcher, SocketInterest interest, bool isKnown);
  /// Ends it for a socket that stays open.
  void stopWatching(int socket);
  /// Ends it for a socket that is being closed, which takes it out of the set by itself.
  void forget(int socket);

 private:
  struct Entry {
    SocketWatcher* watcher = nullptr;
    std::uint32_t uses = 0;
  };

  void wait();
  void handOutEvents();
  void handOut(std::uint64_t tag, std::uint32_t events);

  const std::atomic<bool>& isStopping_;
  asio::posix::basic_stream_descriptor<asio::io_context::executor_type> set_;
  std::vector<Entry> entries_;  // by descriptor
};

}  // namespace platform
