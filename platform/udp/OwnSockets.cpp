#include "platform/udp/OwnSockets.h"

#include <netinet/in.h>

#include <algorithm>
#include <utility>

#include "platform/base/FileDescriptor.h"
#include "platform/udp/NetworkInterface.h"

namespace platform {

namespace {

SocketAddress withoutWildcard(const SocketAddress& address) {
  const auto loopback = address.isIPv6() ? "::1" : "127.0.0.1";
  return address.isWildcard() ? SocketAddress::parse(loopback, address.port()).value() : address;
}

/// Cheap, and true as well of addresses that are not this machine's where the system permits it to
/// bind those (ip_nonlocal_bind).
bool canBeBound(SocketAddress address) {
  address.setPort(0);
  const FileDescriptor socket(::socket(address.family(), SOCK_DGRAM | SOCK_CLOEXEC, 0));
  return socket.isOpen() && ::bind(socket.get(), address.data(), address.size()) == 0;
}

/// All of 127.0.0.0/8 is this machine, although an interface holds one address of it.
bool isIPv4Loopback(const SocketAddress& address) {
  return !address.isIPv6() &&
         ntohl(address.v4().sin_addr.s_addr) >> IN_CLASSA_NSHIFT == IN_LOOPBACKNET;
}

bool isOfThisMachine(const SocketAddress& address) {
  return canBeBound(address) && (isIPv4Loopback(address) || NetworkInterface::holding(address));
}

}  // namespace

OwnSockets::Entry::Entry(const SocketAddress& address, bool isServed)
    : address_(address), isServed_(isServed) {}

OwnSockets::Entry::Entry(Entry&& other) noexcept
    : address_(std::exchange(other.address_, std::nullopt)), isServed_(other.isServed_) {}

OwnSockets::Entry& OwnSockets::Entry::operator=(Entry&& other) noexcept {
  std::swap(address_, other.address_);
  std::swap(isServed_, other.isServed_);
  return *this;
}

void OwnSockets::Entry::reset() {
  if (const auto address = std::exchange(address_, std::nullopt)) {
    shared().remove(*address, isServed_);
  }
}

// Never destroyed: sockets may be closed until the very end.
OwnSockets& OwnSockets::shared() {
  static auto& sockets = *new OwnSockets;
  return sockets;
}

OwnSockets::Entry OwnSockets::serve(const SocketAddress& address) {
  const std::lock_guard lock(mutex_);
  served_.push_back(address.unmapped());
  return {served_.back(), true};
}

OwnSockets::Entry OwnSockets::exchange(const SocketAddress& address) {
  const std::lock_guard lock(mutex_);
  return {*exchanges_.insert(address.unmapped()), false};
}

void OwnSockets::remove(const SocketAddress& address, bool isServed) {
  const std::lock_guard lock(mutex_);
  if (isServed) {
    served_.erase(std::find(served_.begin(), served_.end(), address));
  } else {
    exchanges_.erase(exchanges_.find(address));
  }
}

OwnSockets::Match OwnSockets::servedMatch(const SocketAddress& address) const {
  const std::lock_guard lock(mutex_);
  auto match = Match::none;
  for (const auto& own : served_) {
    if (own == address) {
      return Match::exact;
    }
    if (own.isWildcard() && own.family() == address.family() && own.port() == address.port()) {
      match = Match::wildcard;
    }
  }
  return match;
}

bool OwnSockets::isExchange(const SocketAddress& address) const {
  const std::lock_guard lock(mutex_);
  return exchanges_.contains(address);
}

bool OwnSockets::servesAt(const SocketAddress& destination) const {
  const auto address = withoutWildcard(destination.unmapped());
  const auto match = servedMatch(address);
  return match == Match::exact || (match == Match::wildcard && isOfThisMachine(address));
}

bool OwnSockets::hasSent(const SocketAddress& sender) const {
  return isExchange(sender.unmapped()) || servesAt(sender);
}

}  // namespace platform
