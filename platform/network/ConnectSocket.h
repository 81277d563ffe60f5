#pragma once

#include "platform/network/NWConnection.h"
#include "platform/udp/UDPSocket.h"

namespace platform {

/// Opens the socket, if need be at the cost of the connection that has been idle longest, and
/// connects it. Gives the state that comes of it: ready, waiting or failed; the socket is open for
/// ready only.
NWConnection::State connectSocket(UDPSocket& socket, const NWEndpoint::Host& host,
                                  NWEndpoint::Port port);

}  // namespace platform
