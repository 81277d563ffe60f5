#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <system_error>
#include <tl/expected.hpp>

#include "platform/base/Data.h"
#include "platform/dispatch/WatchedSocket.h"
#include "platform/udp/DatagramSlots.h"
#include "platform/udp/ErrorQueue.h"
#include "platform/udp/OwnSockets.h"
#include "platform/udp/SocketAddress.h"

namespace platform {

/// A non-blocking UDP socket: connected to one peer, or bound for clients to send to. It is one of
/// `OwnSockets` while it is open. Not thread-safe. Errors are the system's.
class UDPSocket {
 public:
  /// How a socket is bound for clients.
  struct Binding {
    /// What the kernel holds while the owner is busy, octets. It takes this twice, and may give
    /// less.
    int receiveBuffer = 0;
    /// Whether the IPv6 wildcard address takes IPv4 in its IPv6 form too (RFC 4291, section
    /// 2.5.5.2). If not, both wildcard addresses can be bound to one port, side by side.
    bool takesIPv4 = false;
    /// Whether the kernel keeps what the network answers for `takeRefusal`.
    bool keepsRefusals = false;
    /// Whether each datagram tells the interface by which it came.
    bool tellsInterface = false;
  };
  struct Answer {
    DatagramPath path;
    Data bytes;
  };
  /// What one system call has made of several datagrams: so many of the first are sent. The error
  /// is that of the next one, and told only when none is sent.
  struct Sent {
    std::size_t count = 0;
    std::error_code error{};
  };
  /// The most that one system call sends.
  static constexpr std::size_t kMaxTogether = 64;

  UDPSocket() = default;
  ~UDPSocket() = default;
  UDPSocket(const UDPSocket&) = delete;
  UDPSocket& operator=(const UDPSocket&) = delete;

  std::error_code open(sa_family_t family);
  /// For one that is open.
  std::error_code connect(const SocketAddress& peer);
  /// Opens it and binds it; port 0 leaves the choice to the system. It stays closed after an error.
  std::error_code bind(const SocketAddress& address, const Binding& binding);
  void close();

  [[nodiscard]] bool isOpen() const { return socket_.isOpen(); }
  [[nodiscard]] int get() const { return socket_.get(); }
  /// Its own side, with the port that it has; stays when it is closed.
  [[nodiscard]] const SocketAddress& address() const { return address_; }
  /// See `WatchedSocket`.
  std::error_code watch(SocketWatcher& watcher, SocketInterest interest,
                        const DispatchQueue& queue = DispatchQueue::global()) {
    return socket_.watch(watcher, interest, queue);
  }

  /// Whether a call failed only since there is no room to send, or nothing to be received, now.
  static bool wouldBlock(std::error_code error) {
    return error == std::errc::resource_unavailable_try_again;
  }

  /// Sends to the peer of a connected socket. The kernel hands out the refusal of an earlier
  /// datagram as the error of this one, which then has not been sent.
  std::error_code send(DataView datagram);
  /// The same for several, by one system call. An error of the first one may be of an earlier
  /// datagram, and one that ends it after some are sent is forgotten.
  Sent sendTogether(std::span<const DataView> datagrams);
  /// Takes one datagram of a connected socket: its length, which may be more than there is room.
  tl::expected<std::size_t, std::error_code> receive(std::span<std::uint8_t> room);
  /// Takes the refusal that waits at a connected socket, if one does, so that it is no error of
  /// what comes next and wakes no watcher.
  void dropRefusal();

  /// Sends from the destination of `path` back to its client.
  std::error_code send(const DatagramPath& path, DataView datagram);
  /// The same for several, by one system call.
  Sent sendTogether(std::span<const Answer> answers);
  /// Sends all with as few system calls as it takes, in their order; those that fail are lost.
  void sendAll(std::span<const Answer> answers);
  /// What has arrived at a bound socket, as `DatagramSlots::receive`.
  DatagramSlots::Received receive(DatagramSlots& slots) {
    return slots.receive(get(), address_, tellsInterface_);
  }
  /// The next refusal; absent when there is none.
  std::optional<Refusal> takeRefusal() { return ErrorQueue::take(get()); }
  /// How many datagrams the kernel had no room for since the last call.
  std::uint32_t takeLost();

 private:
  void serve(bool takesIPv4);

  WatchedSocket socket_;
  SocketAddress address_;
  std::optional<OwnSockets::Entry> own_;
  std::optional<OwnSockets::Entry> ownIPv4_;  // of one that takes both families
  bool tellsInterface_ = false;
  std::uint32_t lost_ = 0;  // all so far, modulo 2^32
};

}  // namespace platform
