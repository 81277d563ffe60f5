#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <unordered_set>
#include <vector>

#include "platform/udp/SocketAddress.h"

namespace platform {

/// The addresses of this process's UDP sockets, so that it neither asks itself nor answers itself:
/// such a datagram would go round in a circle for ever.
///
/// An IPv4 address in its IPv6 form (RFC 4291, section 2.5.5.2) is the IPv4 address. From any
/// thread.
class OwnSockets {
 public:
  /// One socket, known for as long as this lives.
  class Entry {
   public:
    Entry() = default;
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    Entry(Entry&& other) noexcept;
    Entry& operator=(Entry&& other) noexcept;
    ~Entry() { reset(); }

    void reset();
    /// Absent for none.
    [[nodiscard]] const std::optional<SocketAddress>& address() const { return address_; }

   private:
    friend class OwnSockets;
    Entry(const SocketAddress& address, bool isServed);

    std::optional<SocketAddress> address_;
    bool isServed_ = false;
  };

  static OwnSockets& shared();

  /// A socket bound to `address`, which anybody may send to. The wildcard address stands for all
  /// addresses of its family; a socket for both families is two of these.
  [[nodiscard]] Entry serve(const SocketAddress& address);
  /// A connected socket whose own side is `address`.
  [[nodiscard]] Entry exchange(const SocketAddress& address);

  /// Whether what is sent to `destination` comes to a socket that serves. The wildcard address is
  /// the loopback one there.
  [[nodiscard]] bool servesAt(const SocketAddress& destination) const;
  /// Whether `sender` is a socket that serves or a connected one.
  [[nodiscard]] bool hasSent(const SocketAddress& sender) const;

 private:
  /// Connected sockets seldom share a port.
  struct ByPort {
    std::size_t operator()(const SocketAddress& address) const { return address.port(); }
  };
  enum class Match { none, exact, wildcard };

  OwnSockets() = default;

  [[nodiscard]] Match servedMatch(const SocketAddress& address) const;
  [[nodiscard]] bool isExchange(const SocketAddress& address) const;
  void remove(const SocketAddress& address, bool isServed);

  mutable std::mutex mutex_;  // owns what follows
  std::vector<SocketAddress> served_;
  std::unordered_multiset<SocketAddress, ByPort> exchanges_;
};

}  // namespace platform
