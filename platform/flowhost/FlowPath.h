#pragma once

#include "platform/network/SocketAddress.h"

namespace platform {

/// The two ends of a flow: the client's socket, and the address of ours that it has asked.
struct FlowPath {
  SocketAddress client;
  SocketAddress asked;

  bool operator==(const FlowPath&) const = default;
};

}  // namespace platform
