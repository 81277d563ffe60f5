#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/base/Data.h"

namespace quillet {

/// The domain that the demo policy maps, and whatever contains it.
inline constexpr char kMappedDomain[] = "intranet.example";

/// The organisation that a policy request is for, borrowed; nothing for a datagram that is none.
/// The name stands in the request as it is, quotes and all.
std::optional<std::string_view> organizationOf(platform::DataView request);

/// The policy of every organisation: `kMappedDomain` goes to `server` (`127.0.0.1:5382`).
std::string policyFor(const std::string& server);

}  // namespace quillet
