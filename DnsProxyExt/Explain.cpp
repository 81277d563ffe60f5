// Where a query would go: the same decisions as in QueryRoad.cpp, and no step of that road.

#include "DnsProxyExt/DnsProxyExt.h"
#include "dnscodec/OptionBlock.h"
#include "platform/base/Description.h"

namespace quillet {

using Rule = Route::Rule;

namespace {

/// Those that fit; an injection leaves the others out.
ValuesForInject fitting(ValuesForInject values) {
  std::size_t size = 0;
  std::erase_if(values, [&size](const auto& option) {
    const bool fits = OptionBlock::fits(size, option.second);
    size += fits ? OptionBlock::kHeadSize + option.second.size() : 0;
    return !fits;
  });
  return values;
}

}  // namespace

Explanation DnsProxyExt::explain(const std::string& questionName,
                                 const std::string& application) const {
  if (bypassAll) {
    return {};
  }
  const auto route = routing.choose(application, routedDomain(questionName));
  Explanation explanation{.rule = static_cast<int>(route.rule) + 1,
                          .server = platform::description(route.server),
                          .matched = route.matched,
                          .from = sourceOf(route)};
  if (route.rule == Rule::filtering) {
    explanation.identity = fitting(MDMConfigurationManager::shared().identityFor(application));
  }
  return explanation;
}

std::set<std::string> DnsProxyExt::serverTexts(Rule rule) const {
  return routing.serverTexts(rule);
}

std::optional<std::string> DnsProxyExt::sourceOf(const Route& route) const {
  switch (route.rule) {
    case Rule::localNetworkApp:
      return "built in";
    case Rule::allowedApp:
      return vendorKeyOf(route.matched ? routing.allowedAppsKey : "allowAll");
    case Rule::localDomain:
      return vendorKeyOf("mappedDomains");
    case Rule::whitelistedDomain:
      return "policy";
    case Rule::filtering:
      break;
  }
  return std::nullopt;
}

/// Of several keys that mean the same setting, the last has given its text.
std::string DnsProxyExt::vendorKeyOf(std::string_view setting) const {
  std::string written(setting);
  if (vendorData) {
    for (const auto& [key, value] : *vendorData) {
      if (value.is_string() && MDMConfigurationManager::keyFrom(key) == setting) {
        written = key;
      }
    }
  }
  return written;
}

}  // namespace quillet
