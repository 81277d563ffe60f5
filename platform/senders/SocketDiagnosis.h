#pragma once

#include <sys/socket.h>
#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/Transport.h"
#include "platform/udp/SocketAddress.h"

namespace platform {

/// Whose a socket is.
struct SocketOwner {
  uid_t user = 0;
  /// What /proc/PID/fd names it by; 0 for one that its process has closed.
  std::uint32_t inode = 0;
  /// No other socket of this boot has it.
  std::uint64_t cookie = 0;
  /// The id of the cgroup (version 2) that it was made in; absent when the kernel does not tell.
  std::optional<std::uint64_t> cgroup;

  bool operator==(const SocketOwner&) const = default;
};

/// A socket as the kernel describes it. IPv4 in its IPv6 form is IPv4.
struct DiagnosedSocket {
  SocketAddress local;
  SocketAddress remote;  // with port 0 for none
  bool isListening = false;
  bool isIPv6Only = false;
  SocketOwner owner;
};

/// Requests to the kernel's `sock_diag` interface (sock_diag(7)) and its answers, as bytes.
namespace socket_diagnosis {

/// What is asked about: the fields of the kernel's request, in its words.
struct Query {
  Transport transport = Transport::udp;
  sa_family_t family = AF_INET;
  SocketAddress source;
  SocketAddress destination;
  unsigned interfaceIndex = 0;
};

/// Asks for the one socket that fits.
Data exactRequest(const Query& query, std::uint32_t sequence);
/// Asks for all sockets of `family` with that local port.
Data portRequest(Transport transport, sa_family_t family, std::uint16_t port,
                 std::uint32_t sequence);

/// One piece of an answer.
struct Answer {
  std::vector<DiagnosedSocket> sockets;
  /// Nothing more comes: the end of a list, or the error.
  bool isComplete = false;
  /// An errno value; 0 for none.
  int error = 0;
};

/// Reads what one `recv` has given, of a buffer aligned as a `nlmsghdr` is. What belongs to another
/// sequence is passed over; the first message that makes no sense ends the reading with EBADMSG.
Answer read(DataView bytes, std::uint32_t sequence);

}  // namespace socket_diagnosis

}  // namespace platform
