#pragma once

#include <optional>
#include <system_error>

#include "platform/udp/SocketAddress.h"

namespace platform {

/// What the network answered to an earlier send to `client` (RFC 1122, section 4.1.3.3).
struct Refusal {
  SocketAddress client;
  std::error_code error;
};

/// What the kernel keeps of refusals for a socket that is not connected (ip(7), IP_RECVERR).
struct ErrorQueue {
  /// Lets the kernel keep them; for an IPv6 socket those of its IPv4 clients too.
  static std::error_code request(int socket, bool isIPv6);
  /// The next one; absent when there is none.
  static std::optional<Refusal> take(int socket);
};

}  // namespace platform
