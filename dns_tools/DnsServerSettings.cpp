#include "dns_tools/DnsServerSettings.h"

#include <DeploymentValues.h>

namespace DnsToolsSocket {

using platform::NWEndpoint;

const NWEndpoint::Host& DnsServerSettings::hostUDP() {
  static const NWEndpoint::Host host(quillet::deployment::kFilteringDns);
  return host;
}

const NWEndpoint::Port& DnsServerSettings::portUDP() {
  static constexpr NWEndpoint::Port kPort(81);
  return kPort;
}

}  // namespace DnsToolsSocket
