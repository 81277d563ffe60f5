#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "DnsProxyExt/routing/Utils.h"

namespace quillet {

/// Where a query goes, and why.
struct Route {
  /// In the order in which they are tried.
  enum class Rule { localNetworkApp, allowedApp, localDomain, whitelistedDomain, filtering };

  Rule rule;
  DNSHostRef server;
  /// The entry of the application list, or the fragment of the domain map, that the rule found.
  /// Absent when it looked for none.
  std::optional<std::string> matched = std::nullopt;
  /// What was routed; absent when the query has no name.
  std::optional<std::string> domain = std::nullopt;
  /// Whether the allowed applications have an entry for the application, whatever the rule.
  bool isAllowedApp = false;
};

/// The name that the domain maps are asked for: that of a question without "www." and the last dot.
std::string routedDomain(std::string_view questionName);

/// The log's line about a route.
std::string lineOf(const Route& route);
/// Whether that line goes to the relay service's log too.
bool isRelayed(Route::Rule rule);

}  // namespace quillet
