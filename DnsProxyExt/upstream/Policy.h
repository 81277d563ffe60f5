#pragma once

#include <optional>
#include <string_view>

#include "DnsProxyExt/routing/DomainMap.h"
#include "platform/base/Clock.h"
#include "platform/base/Data.h"

namespace quillet {

/// How the fetching of the policy goes.
struct PolicyState {
  enum class Outcome { waiting, fetched, failed };

  /// Of the last fetch; absent while none was begun.
  std::optional<Outcome> last;
  /// When a fetch last brought an answer that could be read.
  std::optional<platform::DispatchTime> fetched;
};

/// What asks the policy server for the domains of an organisation, whose name goes in as it is: the
/// server takes it so.
platform::Data policyRequest(std::string_view organization);

/// Takes the server's answer. One that cannot be read, or says that nothing is to change, leaves
/// `whitelisted` as it is; another map takes its place whole, so that a query meets the one or the
/// other. False when it cannot be read.
bool takePolicy(platform::DataView answer, DomainMap& whitelisted);

}  // namespace quillet
