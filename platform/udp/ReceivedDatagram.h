#pragma once

#include "platform/base/Data.h"
#include "platform/udp/SocketAddress.h"

namespace platform {

/// The two ends that a datagram has gone between: the client's socket, and the address of ours that
/// it was sent to, from which an answer leaves.
struct DatagramPath {
  SocketAddress client;
  SocketAddress destination;

  bool operator==(const DatagramPath&) const = default;
};

/// A datagram where it was received into.
struct ReceivedDatagram {
  DatagramPath path;
  DataView bytes;
  /// The interface by which it came, for a socket that tells (`UDPSocket::Binding`); else 0.
  unsigned interfaceIndex = 0;
};

}  // namespace platform
