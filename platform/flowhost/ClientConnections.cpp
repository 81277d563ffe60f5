#include "platform/flowhost/ClientConnections.h"

#include <algorithm>
#include <utility>

#include "platform/base/DescriptorLimit.h"
#include "platform/log/NSLog.h"
#include "platform/network/NWError.h"
#include "platform/senders/OriginalDestination.h"
#include "platform/udp/PacketInfo.h"

namespace platform {

namespace {

// The others are for the exchanges upstream, which are more.
constexpr std::size_t kShareOfDescriptors = 8;

}  // namespace

std::size_t ClientConnections::usualLimit() {
  return std::clamp<std::size_t>(descriptorLimit() / kShareOfDescriptors, 1, kMaxConnections);
}

std::error_code ClientConnections::bind(const SocketAddress& address) {
  auto listener = TCPListener::bind(address);
  if (!listener) {
    return listener.error();
  }
  listeners_.push_back(*std::move(listener));
  return {};
}

std::error_code ClientConnections::listen(ClientConnection::Offer offer) {
  offer_ = std::move(offer);
  for (const auto& listener : listeners_) {
    if (const auto error = listener->listen(weak_from_this())) {
      return error;
    }
  }
  return {};
}

void ClientConnections::close() {
  idleCheck_.invalidate();
  for (const auto& listener : std::exchange(listeners_, {})) {
    listener->close();
  }
  for (const auto& connection : std::exchange(connections_, {})) {
    connection->close();
  }
}

void ClientConnections::accepted(FileDescriptor socket, const SocketAddress& client) {
  acceptError_ = {};
  if (OwnSockets::tcp().hasSent(client)) {
    NSLog("FlowHost: dropped a connection from our own socket ", client);
    return;
  }
  SocketAddress destination;
  if (destination.readOwnSideOf(socket.get())) {
    return;
  }
  makeRoom();
  ClientDatagrams origin{{client, destination}};
  origin.captured = OriginalDestination::ofConnection(socket.get(), client, destination).path();
  const auto info = PacketInfo::ofConnection(socket.get(), destination);
  origin.interfaceIndex = info ? info->interfaceIndex : 0;
  connections_.push_back(
      std::make_shared<ClientConnection>(std::move(origin), offer_, outstanding_));
  connections_.back()->begin(std::move(socket));
  if (!idleCheck_.isValid()) {
    checkTime();
  }
}

void ClientConnections::cannotAccept(const TCPListener& listener, std::error_code error) {
  if (std::exchange(acceptError_, error) != error) {
    NSLog("FlowHost: cannot accept on ", listener.address(), ": ", NWError::from(error));
  }
}

void ClientConnections::makeRoom() {
  dropClosed();
  if (connections_.size() >= limit_) {
    const auto idlest = std::min_element(
        connections_.begin(), connections_.end(),
        [](const auto& a, const auto& b) { return a->lastActivity() < b->lastActivity(); });
    (*idlest)->close();
    dropClosed();
  }
}

// None becomes idle for too long before it is looked at again: `kIdleSeconds` go by until then.
void ClientConnections::checkTime() {
  double next = ClientConnection::kIdleSeconds;
  for (const auto& connection : connections_) {
    const auto seconds = connection->checkTime();
    next = connection->isOpen() ? std::min(next, seconds) : next;
  }
  dropClosed();
  if (!connections_.empty()) {
    idleCheck_ = Timer::scheduled(next, false, [this] { checkTime(); });
  }
}

void ClientConnections::dropClosed() {
  std::erase_if(connections_, [](const auto& connection) { return !connection->isOpen(); });
}

}  // namespace platform
