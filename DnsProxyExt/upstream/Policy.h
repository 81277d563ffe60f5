#pragma once

#include <string_view>

#include "DnsProxyExt/routing/DomainMap.h"
#include "platform/base/Data.h"

namespace quillet {

/// What asks the policy server for the domains of an organisation, whose name goes in as it is: the
/// server takes it so.
platform::Data policyRequest(std::string_view organization);

/// Takes the server's answer. One that cannot be read, or says that nothing is to change, leaves
/// `whitelisted` as it is; another map takes its place whole, so that a query meets the one or the
/// other.
void takePolicy(platform::DataView answer, DomainMap& whitelisted);

}  // namespace quillet
