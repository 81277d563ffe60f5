#pragma once

#include "platform/network/NWEndpoint.h"

namespace DnsToolsSocket {

/// Where the filtering DNS service is. Made once, on first use.
struct DnsServerSettings {
  /// The service's IPv4 address.
  static const platform::NWEndpoint::Host& hostUDP();
  static const platform::NWEndpoint::Port& portUDP();
};

}  // namespace DnsToolsSocket
