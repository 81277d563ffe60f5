#pragma once

#include <optional>

#include "platform/networkextension/NWHostEndpoint.h"
#include "platform/udp/SocketAddress.h"

namespace platform {

/// The address as texts.
NWHostEndpoint endpointFrom(const SocketAddress& address);

/// The address of texts that are an IP address and a port.
std::optional<SocketAddress> addressFrom(const NWHostEndpoint& endpoint);

}  // namespace platform
