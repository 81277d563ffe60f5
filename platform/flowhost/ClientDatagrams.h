#pragma once

#include <optional>
#include <span>
#include <vector>

#include "platform/udp/ReceivedDatagram.h"

namespace platform {

/// What one client socket has sent to one of our addresses, in the order of arrival.
struct ClientDatagrams {
  /// Octets of datagrams; with the one that goes beyond it a group is complete. A group is decoded
  /// and answered in one piece, during which everybody else waits.
  static constexpr std::size_t kFullSize = 64UL * 1024;

  DatagramPath path;
  std::vector<Data> datagrams;
  std::size_t size = 0;
  /// Where the client has sent them to, when they were captured on their way there.
  std::optional<SocketAddress> captured;

  /// The address that the client has asked.
  [[nodiscard]] const SocketAddress& server() const {
    return captured ? *captured : path.destination;
  }
};

/// The datagrams of one read by their way here, in the order in which the ways come up first. What
/// comes on the way of a full group makes a further one.
std::vector<ClientDatagrams> groupedByPath(std::span<const ReceivedDatagram> received);

}  // namespace platform
