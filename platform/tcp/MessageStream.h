#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <system_error>

#include "platform/base/Data.h"
#include "platform/dispatch/WatchedSocket.h"
#include "platform/tcp/MessageFraming.h"
#include "platform/udp/OwnSockets.h"
#include "platform/udp/SocketAddress.h"

namespace platform {

/// A TCP connection that carries DNS messages both ways. It holds what has arrived until it is
/// taken, and what is sent until the kernel takes it; its owner bounds both, by not reading on and
/// by `waiting`. Inside the event loop only. Errors are the system's.
class MessageStream final : private SocketWatcher {
 public:
  /// Told, later, that something may have become different: a message has arrived, the peer has
  /// ended, what waited was sent, the connection is broken.
  class Owner {
   public:
    virtual void streamChanged() = 0;

   protected:
    ~Owner() = default;
  };
  /// Called once for a message: the kernel has taken all of it, or it is lost for that reason.
  using Sent = std::function<void(std::error_code)>;

  MessageStream() = default;
  ~MessageStream() { close(); }
  MessageStream(const MessageStream&) = delete;
  MessageStream& operator=(const MessageStream&) = delete;

  /// Takes over a connected socket that does not block, or begins to connect one to `peer`, which
  /// is then one of `OwnSockets`. `owner` is what this is a part of, which is kept alive while it
  /// is told.
  void open(FileDescriptor socket, std::weak_ptr<Owner> owner);
  std::error_code connect(const SocketAddress& peer, std::weak_ptr<Owner> owner);
  /// What has not been sent fails with ECANCELED, what is sent later with EBADF.
  void close();

  [[nodiscard]] bool isOpen() const { return socket_.isOpen(); }
  /// What has broken the connection; the owner is to close it.
  [[nodiscard]] std::error_code error() const { return error_; }
  /// Whether the peer sends nothing more; it may still read.
  [[nodiscard]] bool hasEnded() const { return hasEnded_; }

  /// Whether octets are read as they come; not so at first. One read is `kReadSize` at most, so
  /// whoever reads only when `next` has nothing holds a message and one read.
  void setReading(bool isReading);
  [[nodiscard]] bool isReading() const { return isReading_ && !hasEnded_; }
  /// The next message that has arrived whole.
  std::optional<Data> next();

  /// Sends the message, with its length, when there is room and after what waits already.
  void send(DataView message, Sent sent);
  /// Octets that the kernel has not taken.
  [[nodiscard]] std::size_t waiting() const { return waiting_; }

  /// When a message was last taken or given, or the kernel last took octets of one; nanoseconds of
  /// the clock's uptime. A piece of a message that has arrived does not count.
  [[nodiscard]] std::uint64_t lastActivity() const { return lastActivity_; }

  static constexpr std::size_t kReadSize = 16UL * 1024;

 private:
  struct Outgoing {
    Data octets;
    std::size_t done = 0;
    Sent sent;
  };

  void socketIsReady(bool canRead, bool canWrite) override;
  void finishConnecting();
  void read();
  void flush();
  /// Whether the kernel has all of it now.
  bool sendWhole(Outgoing& message);
  void watchAsNeeded();
  void fail(std::error_code error);
  void loseWaiting(std::error_code error);
  void touch();

  WatchedSocket socket_;
  std::optional<OwnSockets::Entry> own_;  // of one that we have connected
  std::weak_ptr<Owner> owner_;
  MessageFraming framing_;
  std::deque<Outgoing> outgoing_;
  std::size_t waiting_ = 0;  // octets of outgoing_
  std::error_code error_;
  std::uint64_t lastActivity_ = 0;
  bool isConnecting_ = false;
  bool isReading_ = false;
  bool hasEnded_ = false;
};

}  // namespace platform
