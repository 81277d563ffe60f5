#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <optional>
#include <system_error>

#include "platform/udp/SocketAddress.h"

namespace platform {

/// The control message that tells which of our addresses a datagram was sent to, and from which one
/// an answer leaves (ip(7) IP_PKTINFO; RFC 3542, section 6), and by which interface it came. A
/// socket bound to the wildcard address needs it.
///
/// A datagram to a broadcast or multicast address is answered from a unicast one: over IPv4 from
/// the one that the kernel names with the datagram, over IPv6 from the one that it chooses on the
/// interface.
class PacketInfo {
 public:
  struct Received {
    /// Over IPv4 it is an IPv4 address, whichever the socket.
    SocketAddress destination;
    /// That of the sender's device where a socket bound to one has sent to this machine.
    unsigned interfaceIndex = 0;
  };

  /// Asks the kernel to give it with every datagram of `socket`, with those that come to an IPv6
  /// one over IPv4 too.
  static std::error_code request(int socket, bool isIPv6);

  /// Lets `message` receive it here.
  void prepareToReceive(msghdr& message);
  /// What it tells of the accepted TCP connection `socket`: by which interface the client's first
  /// packet came.
  static std::optional<Received> ofConnection(int socket, const SocketAddress& local);

  /// What it tells of the datagram received with `message`, which was sent to `port`.
  static std::optional<Received> received(msghdr& message, std::uint16_t port);

  /// Makes `message` leave from `source`.
  void sendFrom(msghdr& message, const SocketAddress& source);

 private:
  // The kernel may say it for both families.
  alignas(cmsghdr) unsigned char bytes_[CMSG_SPACE(sizeof(in6_pktinfo)) +
                                        CMSG_SPACE(sizeof(in_pktinfo))] = {};
};

}  // namespace platform
