#pragma once

#include <array>
#include <mutex>

#include "platform/udp/NetworkInterface.h"
#include "platform/udp/SocketAddress.h"

namespace platform {

/// The addresses of this process's sockets of one protocol, so that it neither sends queries
/// to itself nor answers itself: such a query would go round in a circle for ever. A UDP and a TCP
/// port of one number have nothing to do with each other.
///
/// An IPv4 address in its IPv6 form (RFC 4291, section 2.5.5.2) is the IPv4 address. From any
/// thread.
class OwnSockets {
 public:
  enum class Use {
    /// Bound for anybody to send to. The wildcard address stands for all addresses of its family; a
    /// socket for both families is two entries.
    serving,
    /// For one peer; the address is its own side.
    exchange,
  };

  /// One socket, known for as long as this lives. It is a link of the table itself, since every
  /// exchange makes one.
  class Entry {
   public:
    Entry(const SocketAddress& address, Use use, OwnSockets& sockets = shared());
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry();

   private:
    friend class OwnSockets;

    OwnSockets& sockets_;
    const SocketAddress address_;
    const Use use_;
    Entry* next_;  // with the same place in the table
  };

  /// Those of UDP.
  static OwnSockets& shared();
  static OwnSockets& tcp();

  /// Whether what is sent to `destination` comes to a socket that serves. The wildcard address is
  /// the loopback one there. `isOfThisMachine` is asked only where a socket serves all addresses.
  [[nodiscard]] bool servesAt(
      const SocketAddress& destination,
      bool (*isOfThisMachine)(const SocketAddress&) = NetworkInterface::isOfThisMachine) const;
  /// Whether `sender` is one of these sockets.
  [[nodiscard]] bool hasSent(const SocketAddress& sender) const;

 private:
  enum class Match { none, exchange, wildcard, serving };

  OwnSockets() = default;

  Entry*& first(const SocketAddress& address) { return first_[address.port() % first_.size()]; }
  [[nodiscard]] Match find(const SocketAddress& address) const;

  mutable std::mutex mutex_;            // owns what follows
  std::array<Entry*, 512> first_ = {};  // by port
};

}  // namespace platform
