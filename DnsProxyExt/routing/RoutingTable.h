#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "DnsProxyExt/routing/DomainMap.h"
#include "DnsProxyExt/routing/Route.h"
#include "DnsProxyExt/routing/Utils.h"

namespace quillet {

/// The servers, the lists of applications and the maps of domains that decide where a query goes; a
/// value. As made, with the servers of the build.
class RoutingTable {
 public:
  RoutingTable();

  /// The first rule that applies, in the order of `Route::Rule`, for the query of an application
  /// (its signing identifier) for a domain, or for one without a name. An entry of a list matches
  /// anywhere in the identifier, in any letter case.
  [[nodiscard]] Route choose(std::string_view application, std::optional<std::string> domain) const;

  /// The different servers of a rule, those of `DomainMap::serverTexts` for a map's; none where
  /// there is none.
  [[nodiscard]] std::set<std::string> serverTexts(Route::Rule rule) const;

  /// Applications that go to `localNetworkDNS`, while there is one.
  std::vector<std::string> localNetworkApps{"com.apple.opendirectoryd", "com.apple.nsupdate"};
  /// Those that go to `secondDNS`; with `shouldAllowAll` all do.
  std::vector<std::string> allowedApps;
  /// The setting that has given them.
  std::string_view allowedAppsKey;
  bool shouldAllowAll = false;
  DomainMap localDomainsMap;
  DomainMap whitelistedDomainsMap;
  /// May be nullptr.
  DNSHostRef localNetworkDNS;
  DNSHostRef secondDNS;
  /// For whatever no other rule is for.
  DNSHostRef filteringDNS;

 private:
  [[nodiscard]] Route firstRule(const std::string& foldedApplication,
                                const std::optional<std::string>& allowed,
                                std::string_view domain) const;
};

}  // namespace quillet
