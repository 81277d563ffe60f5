#pragma once

#include <optional>
#include <string>

#include "DnsProxyExt/settings/MDMConfigurationManager.h"

namespace quillet {

/// Where a query would go, and why. As made, that of a query which is declined.
struct Explanation {
  /// From 1 in the order of `Route::Rule`; 0 for a query that is declined.
  int rule = 0;
  std::string server = "system";
  /// The entry or the fragment that the rule found.
  std::optional<std::string> matched = std::nullopt;
  /// Where that comes from, or what else has let the rule apply: a key of the vendor data as it is
  /// written there, "policy" or "built in".
  std::optional<std::string> from = std::nullopt;
  /// What goes along; absent for a server that gets none.
  std::optional<ValuesForInject> identity = std::nullopt;
};

}  // namespace quillet
