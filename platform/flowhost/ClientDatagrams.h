#pragma once

#include <span>
#include <vector>

#include "platform/flowhost/ReceivedDatagram.h"

namespace platform {

/// What one client socket has sent to one of our addresses, in the order of arrival.
struct ClientDatagrams {
  FlowPath path;
  std::vector<Data> datagrams;
};

/// The datagrams of one read by their way here, in the order in which the ways come up first.
std::vector<ClientDatagrams> groupedByPath(std::span<const ReceivedDatagram> received);

}  // namespace platform
