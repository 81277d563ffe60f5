#pragma once

#include <optional>
#include <span>
#include <vector>

#include "platform/flowhost/FlowObserver.h"
#include "platform/udp/ReceivedDatagram.h"

namespace platform {

/// What one client socket has sent to one of our addresses, in the order of arrival.
struct ClientDatagrams {
  /// Octets of datagrams; with the one that goes beyond it a group is complete. A group is decoded
  /// and answered in one piece, during which everybody else waits.
  static constexpr std::size_t kFullSize = 64UL * 1024;

  DatagramPath path;
  std::vector<Data> datagrams{};
  std::size_t size = 0;
  /// Between which ends they were sent, when they were captured on their way.
  std::optional<DatagramPath> captured{};
  /// Whether they may have been captured without that being known.
  bool mayBeCaptured = false;
  /// By which they came; 0 unless the socket tells.
  unsigned interfaceIndex = 0;
  /// Of these datagrams, from when somebody observes them.
  std::shared_ptr<FlowActivity> activity{};

  /// The ends between which the client has sent them, captured or not.
  [[nodiscard]] const SocketAddress& client() const {
    return captured ? captured->client : path.client;
  }
  [[nodiscard]] const SocketAddress& server() const {
    return captured ? captured->destination : path.destination;
  }
};

/// The datagrams of one read by their path and interface, in the order in which these come up
/// first. What comes after a full group makes a further one.
std::vector<ClientDatagrams> groupedByPath(std::span<const ReceivedDatagram> received);

}  // namespace platform
