#include "platform/flowhost/ListenAddresses.h"

#include <utility>

#include "platform/base/Description.h"
#include "platform/flowhost/HostEndpoint.h"
#include "platform/network/NWError.h"

namespace platform {

namespace {

// Ports that the system chooses for UDP before one is free for TCP too; nearly always the first is.
constexpr int kMaxPortsTried = 32;

Error failure(const NWHostEndpoint& endpoint, const std::string& reason) {
  return Error("cannot listen on " + description(endpoint) + reason);
}

std::string text(std::error_code error) { return NWError::from(error).text(); }

}  // namespace

std::optional<Error> ListenAddresses::bind(const NWHostEndpoint& endpoint) {
  const auto address = addressFrom(endpoint);
  return address ? bind(endpoint, *address, kMaxPortsTried)
                 : failure(endpoint, ": not an IP address and a port");
}

std::optional<Error> ListenAddresses::bind(const NWHostEndpoint& endpoint,
                                           const SocketAddress& address, int tries) {
  auto socket = ListenSocket::bind(address, tellsInterface_);
  if (!socket) {
    return failure(endpoint, ": " + text(socket.error()));
  }
  const auto error = tcp_->bind((*socket)->address());
  if (!error) {
    udp_.push_back(*std::move(socket));
    return std::nullopt;
  }
  if (address.port() == 0 && error == std::errc::address_in_use && tries > 1) {
    return bind(endpoint, address, tries - 1);  // while the port is held: another is chosen
  }
  return failure(endpoint, " by TCP: " + text(error));
}

std::optional<Error> ListenAddresses::listen(const std::weak_ptr<ListenSocket::Reader>& reader,
                                             ClientConnection::Offer offer) {
  for (const auto& socket : udp_) {
    if (const auto error = socket->listen(reader)) {
      return failure(endpointFrom(socket->address()), ": " + text(error));
    }
  }
  const auto error = tcp_->listen(std::move(offer));
  return error ? std::optional(Error("cannot listen by TCP: " + text(error))) : std::nullopt;
}

void ListenAddresses::close() {
  for (const auto& socket : std::exchange(udp_, {})) {
    socket->close();
  }
  tcp_->close();
}

std::vector<NWHostEndpoint> ListenAddresses::endpoints() const {
  std::vector<NWHostEndpoint> endpoints;
  for (const auto& socket : udp_) {
    endpoints.push_back(endpointFrom(socket->address()));
  }
  return endpoints;
}

}  // namespace platform
