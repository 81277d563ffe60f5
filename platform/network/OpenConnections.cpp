#include "platform/network/OpenConnections.h"

#include <algorithm>
#include <utility>

#include "platform/base/DescriptorLimit.h"

namespace platform {

namespace {

// Descriptors left to everything else: listen sockets, files, pipes, event sets, TCP connections. A
// quarter of what there is, within these.
constexpr std::size_t kFewestReserved = 64;
constexpr std::size_t kMostReserved = 256;

}  // namespace

// Never destroyed: what it holds may be needed until the very end.
OpenConnections& OpenConnections::shared() {
  static auto& connections = *new OpenConnections;
  return connections;
}

std::size_t OpenConnections::usualLimit() {
  const auto present = std::max(descriptorLimit(), kFewestReserved + 1);
  const auto reserved = std::clamp(present / 4, kFewestReserved, kMostReserved);
  return std::min<std::size_t>(NWConnection::kMaxConnections, present - reserved);
}

void OpenConnections::makeRoom() {
  while (open_.size() >= limit_ && cancelIdleLongest()) {
  }
}

OpenConnections::Place OpenConnections::add(std::shared_ptr<NWConnection> connection) {
  return open_.insert(open_.end(), std::move(connection));
}

bool OpenConnections::cancelIdleLongest() {
  if (open_.empty()) {
    return false;
  }
  const auto connection = open_.front();  // alive until it is out of the list
  connection->cancel();
  return true;
}

}  // namespace platform
