#include <algorithm>

#include "DnsProxyExt/DnsProxyExt.h"
#include "DnsProxyExt/RelayLog.h"
#include "DnsProxyExt/settings/IdentityOption.h"
#include "dnscodec/DNSParser.h"
#include "platform/base/LetterCase.h"
#include "platform/base/RemoveOccurrences.h"
#include "platform/log/NSLog.h"

namespace quillet {

using platform::Data;
using platform::Error;
using platform::NSLog;
using platform::NWHostEndpoint;

/// The outcome of routing: which rule applied, and the server that it names.
struct DnsProxyExt::Route {
  enum class Rule { localNetworkApp, allowedApp, localDomain, whitelistedDomain, filtering };

  Rule rule;
  DNSHostRef server;
  std::optional<std::string> domain;
};

namespace {

// An entry without text (from a comma too many in the list) matches no application, not every one.
bool matchesAny(const std::vector<std::string>& entries, const std::string& foldedApp) {
  return std::any_of(entries.begin(), entries.end(), [&](const std::string& entry) {
    return !entry.empty() && foldedApp.find(platform::caseFolded(entry)) != std::string::npos;
  });
}

/// The name that the domain maps are asked for. A message without a question has none, as one that
/// could not be decoded.
std::optional<std::string> domainOf(const std::optional<DnsToolsSocket::Message>& message) {
  if (!message || message->questions.empty()) {
    return std::nullopt;
  }
  auto domain = platform::removingOccurrences(message->questions.front().name, "www.");
  if (domain.ends_with('.')) {
    domain.pop_back();
  }
  return domain;
}

std::string millisecondsSince1970() {
  const double seconds = platform::secondsSince1970();
  return std::to_string(static_cast<std::int64_t>(seconds * 1000.0));
}

}  // namespace

void DnsProxyExt::connectToDNS(const Flow& flow, std::optional<std::vector<Data>> data,
                               std::optional<std::vector<NWHostEndpoint>> endpoints,
                               const std::optional<Error>& /*error*/) {
  if (!data || data->empty()) {
    return;
  }
  const bool isAnswerable = isComplete(data, endpoints);
  const auto& app = flow->metaData().sourceAppSigningIdentifier;
  NSLog("datagram count = ", data->size());
  const auto route = chooseRoute(app, data->front(), flow->hash());
  logRoute(route);
  auto batch = *std::move(data);
  if (route.rule == Route::Rule::filtering) {
    batch = injectIdentity(app, batch, flow->hash());
  }
  NSLog("dnshost address = ", route.server->address);
  if (!isAnswerable) {
    return;
  }
  exchange(flow, std::move(batch), *std::move(endpoints), *route.server,
           std::bind_front(&DnsProxyExt::handleInBoundDatagram, shared_from_this()));
}

bool DnsProxyExt::isComplete(const std::optional<std::vector<Data>>& data,
                             const std::optional<std::vector<NWHostEndpoint>>& endpoints) {
  return data && !data->empty() && endpoints && endpoints->size() >= data->size();
}

DnsProxyExt::Route DnsProxyExt::chooseRoute(const std::string& app,
                                            platform::DataView firstDatagram,
                                            std::int64_t flowHash) const {
  using Rule = Route::Rule;
  const auto foldedApp = platform::caseFolded(app);
  const bool isAllowed = matchesAny(allowedApps, foldedApp);
  const bool isLocalNetwork = matchesAny(localNetworkApps, foldedApp);
  const auto message = decodeDNSRequest(firstDatagram, flowHash);
  NSLog("msg: ", message);
  auto domain = domainOf(message);
  const auto localHit = mappedForOtherDNS(domain.value_or(""), localDomainsMap);
  const auto whitelistHit = mappedForOtherDNS(domain.value_or(""), whitelistedDomainsMap);
  NSLog("shouldAllowAll = ", shouldAllowAll, ", useSecondDNS = ", isAllowed, ", app = ", app,
        ", allowedApps = ", allowedApps);
  if (isLocalNetwork && localNetworkDNS) {
    return {Rule::localNetworkApp, localNetworkDNS, std::move(domain)};
  }
  if (isAllowed || shouldAllowAll) {
    return {Rule::allowedApp, secondDNS, std::move(domain)};
  }
  if (localHit) {
    return {Rule::localDomain, localHit, std::move(domain)};
  }
  if (whitelistHit) {
    return {Rule::whitelistedDomain, whitelistHit, std::move(domain)};
  }
  return {Rule::filtering, filteringDNS, std::move(domain)};
}

void DnsProxyExt::logRoute(const Route& route) const {
  using Rule = Route::Rule;
  const auto& [port, address] = *route.server;
  switch (route.rule) {
    case Rule::localNetworkApp:
      logTwice("connect to local network  DNS using ", address);
      break;
    case Rule::allowedApp:
      logTwice("connect to 3th part DNS using ", address);
      break;
    case Rule::localDomain:
      NSLog("Mapped to use local DNS server - > connect to local  ", address, ":", port,
            ", q: ", route.domain);
      break;
    case Rule::whitelistedDomain:
      NSLog("Mapped to use whitelisted DNS server - > connect to DNS  ", address, ":", port,
            ", q: ", route.domain);
      break;
    case Rule::filtering:
      NSLog("connect to DNS using Quillet DNS (", address, ":", port, ", q: ", route.domain);
      break;
  }
}

std::vector<Data> DnsProxyExt::injectIdentity(const std::string& app,
                                              const std::vector<Data>& batch,
                                              std::int64_t flowHash) const {
  auto values =
      MDMConfigurationManager::shared().getValuesForInject(app).value_or(ValuesForInject());
  values[IdentityOption::kTimestamp] = millisecondsSince1970();
  logTwice("values for inject = ", values);
  auto injected = DNSParser::injectFlagsToDatagrams(batch, values);
  decodeDNSRequest(injected.front(), flowHash);
  return injected;
}

DNSHostRef DnsProxyExt::mappedForOtherDNS(std::string_view domain, const DomainMap& dnsMap) {
  return dnsMap.server(domain);
}

}  // namespace quillet
