#pragma once

#include "DnsProxyExt/relay/XPCServiceDNSProxyProtocol.h"

namespace QuilletXPCservice {

/// Exported to nobody.
using quillet::XPCServiceDNSProxyProtocol;

}  // namespace QuilletXPCservice
