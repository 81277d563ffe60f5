#include "platform/flowhost/HostEndpoint.h"

#include "platform/base/WholeNumber.h"

namespace platform {

NWHostEndpoint endpointFrom(const SocketAddress& address) {
  return {address.host(), std::to_string(address.port())};
}

std::optional<SocketAddress> addressFrom(const NWHostEndpoint& endpoint) {
  const auto port = wholeNumber<std::uint16_t>(endpoint.port);
  return port ? SocketAddress::parse(endpoint.hostname, *port) : std::nullopt;
}

}  // namespace platform
