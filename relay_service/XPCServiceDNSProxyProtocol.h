#pragma once

#include "DnsProxyExt/XPCServiceDNSProxyProtocol.h"

namespace QuilletXPCservice {

/// Exported to nobody.
using quillet::XPCServiceDNSProxyProtocol;

}  // namespace QuilletXPCservice
