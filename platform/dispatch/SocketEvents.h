#pragma once

#include <sys/epoll.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <system_error>
#include <vector>

#include "platform/dispatch/WatchedSocket.h"

namespace platform {

/// The sockets that one loop watches: an epoll set. A socket costs one system call to be watched
/// and none to stay or to go.
///
/// The set gives back a descriptor's number with the count of uses that the number has had, never a
/// pointer: what is left of a socket closed meanwhile (in the events fetched before, or in a child
/// process that has not executed its program yet) finds nobody. On the loop's thread only, but for
/// `wake`.
class SocketEvents {
 public:
  /// `isStopping` ends the handing out of events after the watcher that is being called. Throws
  /// `std::system_error` when the process has no descriptor left.
  explicit SocketEvents(const std::atomic<bool>& isStopping);

  /// Sets what `watcher` is told of `socket`; `isKnown` when it was told of some of it before.
  std::error_code watch(int socket, SocketWatcher& watcher, SocketInterest interest, bool isKnown);
  /// Ends it for a socket that stays open.
  void stopWatching(int socket);
  /// Ends it for a socket that is being closed, which takes it out of the set by itself.
  void forget(int socket);

  /// Waits for events, but no longer than `longest`, to the millisecond after it. False when there
  /// are none.
  bool wait(std::chrono::nanoseconds longest);
  /// Tells the watchers of the events that the last `wait` has found.
  void handOut();

  /// Ends the `wait` that is under way, or the next one. Any thread may call it.
  void wake();

 private:
  struct Entry {
    SocketWatcher* watcher = nullptr;
    std::uint32_t uses = 0;
  };

  // What one iteration of the loop handles at most; the rest comes with the next.
  static constexpr std::size_t kMaxEvents = 256;

  void handOut(std::uint64_t tag, std::uint32_t events);

  const std::atomic<bool>& isStopping_;
  const FileDescriptor set_;
  const FileDescriptor waker_;
  std::vector<Entry> entries_;  // by descriptor
  std::array<epoll_event, kMaxEvents> events_{};
  std::size_t count_ = 0;
};

}  // namespace platform
