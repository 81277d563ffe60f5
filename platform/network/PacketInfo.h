#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <optional>

#include "platform/network/SocketAddress.h"

namespace platform {

/// The control message that tells which of our addresses a datagram was sent to, and from which one
/// an answer leaves (ip(7) IP_PKTINFO; RFC 3542, section 6). Only a socket bound to the wildcard
/// address needs it.
class PacketInfo {
 public:
  /// Asks the kernel to give it with every datagram of `socket`; false on failure.
  static bool request(int socket, bool isIPv6);

  /// Lets `message` receive it here.
  void prepareToReceive(msghdr& message);
  /// The address that the datagram received with `message` was sent to, with `port`.
  static std::optional<SocketAddress> sentTo(msghdr& message, std::uint16_t port);

  /// Makes `message` leave from `source`.
  void sendFrom(msghdr& message, const SocketAddress& source);

 private:
  alignas(cmsghdr) unsigned char bytes_[CMSG_SPACE(sizeof(in6_pktinfo))] = {};
};

}  // namespace platform
