#pragma once

#include <functional>
#include <list>
#include <system_error>
#include <utility>

namespace platform {

/// Sends of one socket that wait until the kernel has room, the oldest first (backpressure). Their
/// owner bounds them, and flushes when the socket can be written.
class SendBacklog {
 public:
  /// Attempts the send.
  using Send = std::function<std::error_code()>;
  /// Called once with what the send has come to.
  using Done = std::function<void(std::error_code)>;

  [[nodiscard]] bool isEmpty() const { return entries_.empty(); }
  [[nodiscard]] std::size_t size() const { return entries_.size(); }

  /// Sends now, unless others wait or there is no room: then it waits after them.
  template <class SendNow, class DoneNow>
  void send(SendNow send, DoneNow done) {
    const auto error = isEmpty() ? send() : noRoom();
    if (error == noRoom()) {
      entries_.push_back({std::move(send), std::move(done)});
    } else {
      done(error);
    }
  }

  /// Sends what there is room for.
  void flush();
  /// Ends all with `error`.
  void fail(std::error_code error);

 private:
  struct Entry {
    Send send;
    Done done;
  };

  static std::error_code noRoom() {
    return std::make_error_code(std::errc::resource_unavailable_try_again);
  }

  std::list<Entry> entries_;
};

}  // namespace platform
