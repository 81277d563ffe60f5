#include "platform/udp/OwnSockets.h"

#include <algorithm>
#include <utility>

namespace platform {

namespace {

SocketAddress withoutWildcard(const SocketAddress& address) {
  const auto loopback = address.isIPv6() ? "::1" : "127.0.0.1";
  return address.isWildcard() ? SocketAddress::parse(loopback, address.port()).value() : address;
}

}  // namespace

// Never destroyed: sockets may be closed until the very end.
OwnSockets& OwnSockets::shared() {
  static auto& sockets = *new OwnSockets;
  return sockets;
}

OwnSockets& OwnSockets::tcp() {
  static auto& sockets = *new OwnSockets;
  return sockets;
}

OwnSockets::Entry::Entry(const SocketAddress& address, Use use, OwnSockets& sockets)
    : sockets_(sockets), address_(address.unmapped()), use_(use) {
  const std::lock_guard lock(sockets_.mutex_);
  next_ = std::exchange(sockets_.first(address_), this);
}

OwnSockets::Entry::~Entry() {
  const std::lock_guard lock(sockets_.mutex_);
  auto* link = &sockets_.first(address_);
  while (*link != this) {
    link = &(*link)->next_;
  }
  *link = next_;
}

OwnSockets::Match OwnSockets::find(const SocketAddress& address) const {
  const std::lock_guard lock(mutex_);
  auto best = Match::none;
  for (const auto* own = first_[address.port() % first_.size()]; own != nullptr; own = own->next_) {
    if (own->address_ == address) {
      best = std::max(best, own->use_ == Use::serving ? Match::serving : Match::exchange);
    } else if (own->use_ == Use::serving && own->address_.isWildcard() &&
               own->address_.family() == address.family() &&
               own->address_.port() == address.port()) {
      best = std::max(best, Match::wildcard);
    }
  }
  return best;
}

bool OwnSockets::servesAt(const SocketAddress& destination,
                          bool (*isOfThisMachine)(const SocketAddress&)) const {
  const auto address = withoutWildcard(destination.unmapped());
  const auto match = find(address);
  return match == Match::serving || (match == Match::wildcard && isOfThisMachine(address));
}

bool OwnSockets::hasSent(const SocketAddress& sender) const {
  const auto address = sender.unmapped();
  const auto match = find(address);
  return match == Match::wildcard ? NetworkInterface::isOfThisMachine(address)
                                  : match != Match::none;
}

}  // namespace platform
