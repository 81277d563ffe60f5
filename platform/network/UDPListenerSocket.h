#pragma once

#include <cstdint>
#include <optional>
#include <tl/expected.hpp>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/FileDescriptor.h"
#include "platform/network/NWError.h"
#include "platform/network/OwnSockets.h"
#include "platform/network/SocketAddress.h"

namespace platform {

/// A UDP port of every local address, IPv4 (in its IPv6 form, RFC 4291 section 2.5.5.2) and IPv6;
/// of every IPv4 address on a machine without IPv6. Non-blocking. Not thread-safe.
class UDPListenerSocket {
 public:
  /// A datagram, the client it came from, and the address of ours that the client asked.
  struct Arrival {
    SocketAddress client;
    SocketAddress asked;
    DataView datagram;  // valid until the next call of `receive`
  };
  /// What the network answered to an earlier `send` to `client` (RFC 1122, section 4.1.3.3).
  struct Refusal {
    SocketAddress client;
    NWError error;
  };

  /// Port 0 leaves the choice to the system.
  static tl::expected<UDPListenerSocket, NWError> bind(std::uint16_t port);

  [[nodiscard]] int get() const { return socket_.get(); }
  [[nodiscard]] std::uint16_t port() const { return port_; }
  void close();

  /// The next datagram, whole; absent when there is none.
  std::optional<Arrival> receive();
  /// How many datagrams the kernel had no room for since this was last asked.
  std::uint32_t takeLost();
  /// The next refusal; absent when there is none.
  std::optional<Refusal> takeRefusal();

  /// Sends one datagram from our address `from`. What the network answered to an earlier one is no
  /// error of it.
  std::optional<NWError> send(const SocketAddress& from, const SocketAddress& to,
                              DataView datagram);

 private:
  UDPListenerSocket(FileDescriptor socket, bool isIPv6);

  FileDescriptor socket_;
  bool isIPv6_;
  std::uint16_t port_;
  std::vector<OwnSockets::Entry> served_;  // one for each family, while it is open
  Data buffer_;
  std::uint32_t lost_ = 0;  // all so far, modulo 2^32
};

}  // namespace platform
