#pragma once

#include <system_error>

#include "platform/base/FileDescriptor.h"
#include "platform/dispatch/DispatchQueue.h"

namespace platform {

/// Told what can be done with a socket, on the queue that watches it.
class SocketWatcher {
 public:
  SocketWatcher() = default;
  SocketWatcher(const SocketWatcher&) = delete;
  SocketWatcher& operator=(const SocketWatcher&) = delete;

  /// Called in every iteration of the loop for as long as it holds, not only when it begins to
  /// hold. An error that waits at the socket counts as both. May close the socket; keeps itself
  /// alive while it runs.
  virtual void socketIsReady(bool canRead, bool canWrite) = 0;

 protected:
  ~SocketWatcher() = default;
};

/// What a watcher wants to know of. An error at the socket is told to whoever wants anything.
struct SocketInterest {
  bool reading = false;
  bool writing = false;

  bool operator==(const SocketInterest&) const = default;
};

class SocketEvents;

/// Owns a non-blocking socket that a queue may watch. On that queue only.
class WatchedSocket {
 public:
  WatchedSocket() = default;
  explicit WatchedSocket(FileDescriptor socket) : socket_(std::move(socket)) {}
  ~WatchedSocket() { close(); }
  WatchedSocket(const WatchedSocket&) = delete;
  WatchedSocket& operator=(const WatchedSocket&) = delete;

  /// Takes over `socket`; for an object that holds none.
  void open(FileDescriptor socket) { socket_ = std::move(socket); }
  /// Closes the socket; the watcher hears no more of it, not even in the turn that is running.
  void close();

  [[nodiscard]] bool isOpen() const { return socket_.isOpen(); }
  [[nodiscard]] int get() const { return socket_.get(); }

  [[nodiscard]] SocketInterest interest() const { return interest_; }
  /// Tells `watcher` of `interest` from now on, as work of `queue`, which outlives that; always the
  /// same two. Fails when the system has no room to remember it.
  std::error_code watch(SocketWatcher& watcher, SocketInterest interest,
                        const DispatchQueue& queue = DispatchQueue::global());

 private:
  FileDescriptor socket_;
  SocketInterest interest_;
  SocketEvents* events_ = nullptr;  // of the queue
};

}  // namespace platform
