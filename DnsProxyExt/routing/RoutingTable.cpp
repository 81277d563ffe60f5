#include "DnsProxyExt/routing/RoutingTable.h"

#include <DeploymentValues.h>

#include <algorithm>
#include <utility>

#include "platform/base/LetterCase.h"

namespace quillet {

using Rule = Route::Rule;

namespace {

/// The first entry that matches. One without text (from a comma too many in the list) matches no
/// application, not every one.
std::optional<std::string> entryFor(const std::string& foldedApplication,
                                    const std::vector<std::string>& entries) {
  const auto found = std::find_if(entries.begin(), entries.end(), [&](const std::string& entry) {
    return !entry.empty() &&
           foldedApplication.find(platform::caseFolded(entry)) != std::string::npos;
  });
  return found == entries.end() ? std::nullopt : std::optional(*found);
}

}  // namespace

RoutingTable::RoutingTable()
    : localNetworkDNS(Utils::DNSHost::at(deployment::kLocalNetworkDns, "53")),
      secondDNS(Utils::DNSHost::at(deployment::kSecondDns, "53")),
      filteringDNS(Utils::DNSHost::at(deployment::kFilteringDns, "81")) {}

Route RoutingTable::choose(std::string_view application, std::optional<std::string> domain) const {
  const auto folded = platform::caseFolded(application);
  const auto allowed = entryFor(folded, allowedApps);
  auto route = firstRule(folded, allowed, domain.value_or(""));
  route.domain = std::move(domain);
  route.isAllowedApp = allowed.has_value();
  return route;
}

std::set<std::string> RoutingTable::serverTexts(Rule rule) const {
  const auto only = [](const DNSHostRef& server) {
    return server ? std::set{server->description()} : std::set<std::string>();
  };
  switch (rule) {
    case Rule::localNetworkApp:
      return only(localNetworkDNS);
    case Rule::allowedApp:
      return only(secondDNS);
    case Rule::localDomain:
      return localDomainsMap.serverTexts();
    case Rule::whitelistedDomain:
      return whitelistedDomainsMap.serverTexts();
    case Rule::filtering:
      break;
  }
  return only(filteringDNS);
}

Route RoutingTable::firstRule(const std::string& foldedApplication,
                              const std::optional<std::string>& allowed,
                              std::string_view domain) const {
  if (localNetworkDNS) {
    if (const auto entry = entryFor(foldedApplication, localNetworkApps)) {
      return {Rule::localNetworkApp, localNetworkDNS, entry};
    }
  }
  if (allowed || shouldAllowAll) {
    return {Rule::allowedApp, secondDNS, allowed};
  }
  if (const auto* mapped = localDomainsMap.find(domain)) {
    return {Rule::localDomain, mapped->second, mapped->first};
  }
  if (const auto* mapped = whitelistedDomainsMap.find(domain)) {
    return {Rule::whitelistedDomain, mapped->second, mapped->first};
  }
  return {Rule::filtering, filteringDNS};
}

}  // namespace quillet
