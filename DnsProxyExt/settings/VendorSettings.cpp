#include "DnsProxyExt/settings/VendorSettings.h"

#include <DeploymentValues.h>

#include <memory>

#include "DnsProxyExt/routing/MappedDomains.h"
#include "platform/base/CommaDelimited.h"
#include "platform/log/NSLog.h"
#include "platform/store/JSONDocument.h"

namespace quillet {

using platform::JSONFault;
using platform::NSLog;
using Conf = ConfigurationMap;
using Target = VendorSettingsTarget;
using Step = VendorSetting::Step;

namespace {

constexpr char kPolicyPort[] = "2800";
constexpr char kJsonVars[] = "jsonVars";

/// The server that a setting names, or nullptr.
DNSHostRef serverIn(const Conf& conf, std::string_view key) {
  const auto* text = settingIn(conf, key);
  return text != nullptr ? std::make_shared<Utils::DNSHost>(*text) : nullptr;
}

void replace(DNSHostRef& server, DNSHostRef named) {
  if (named) {
    server = std::move(named);
  }
}

void takeFilteringDNS(const Conf& conf, const Target& target) {
  replace(target.routing.filteringDNS, serverIn(conf, "filteringDNS"));
}

void takeSecondDNS(const Conf& conf, const Target& target) {
  replace(target.routing.secondDNS, serverIn(conf, "secondDNS"));
}

void takeLocalNetworkDNS(const Conf& conf, const Target& target) {
  target.routing.localNetworkDNS = serverIn(conf, "localNetworkDNS");
}

void takePolicyServer(const Conf& conf, const Target& target) {
  target.policyServer = Utils::DNSHost::at(deployment::kPolicyServer, kPolicyPort);
  replace(target.policyServer, serverIn(conf, "policyServer"));
}

void takeMappedDomains(const Conf& conf, const Target& target) {
  const auto* text = settingIn(conf, "mappedDomains");
  target.routing.localDomainsMap = text != nullptr ? parseMappedDomains(*text) : DomainMap();
}

/// Without text when there is none.
const std::string& jsonVarsIn(const Conf& conf) {
  static const std::string kNone;
  const auto* text = settingIn(conf, kJsonVars);
  return text != nullptr ? *text : kNone;
}

// An array or a number that goes beyond the reader's bounds is valid, and no object.
bool isValidJSON(std::string_view text) {
  const auto json = platform::parseJSON(text);
  return json || json.error() == JSONFault::kTooDeep || json.error() == JSONFault::kNumberTooLarge;
}

// Where "jsonVars" is JSON, the list is there or nowhere.
void takeAllowPackages(const Conf& conf, const Target& target) {
  const auto& jsonVars = jsonVarsIn(conf);
  if (!jsonVars.empty() && isValidJSON(jsonVars)) {
    return;
  }
  const auto* text = settingIn(conf, kAllowPackages);
  target.routing.allowedAppsKey = kAllowPackages;
  target.routing.allowedApps =
      text != nullptr ? platform::parseCommaDelimitedArr(*text) : std::vector<std::string>();
}

// Without a list of packages it leaves the list as it is, like one that is no object; so does one
// whose list goes beyond the reader's bounds.
void takeJsonVars(const Conf& conf, const Target& target) {
  const auto& text = jsonVarsIn(conf);
  if (text.empty()) {
    return;
  }
  NSLog("initVendorSettings2, jsonVars = ", text);
  const auto json = platform::parseJSON(text);
  if (!json || !json->value.is_object()) {
    return;
  }
  NSLog("initVendorSettings3, jsonDict = ", json->value);
  const auto list = json->value.find(kAllowPackages);
  if (list == json->value.end() || !list->is_array()) {
    return;
  }
  target.routing.allowedAppsKey = kJsonVars;
  target.routing.allowedApps.clear();
  for (const auto& package : *list) {
    target.routing.allowedApps.push_back(platform::description(package));
  }
}

void takeAllowAll(const Conf& conf, const Target& target) {
  target.routing.shouldAllowAll = allowsAll(conf);
}

void takeCaptivePortalIp(const Conf& conf, const Target& target) {
  if (const auto* text = settingIn(conf, "captivePortalIp"); text != nullptr && !text->empty()) {
    target.captivePortalIps = platform::parseCommaDelimitedArr(*text);
  }
}

constexpr VendorSetting kSettings[] = {
    {"filteringDNS", "server", Step::servers, takeFilteringDNS, faultsOfServer},
    {"secondDNS", "server", Step::servers, takeSecondDNS, faultsOfServer},
    {"localNetworkDNS", "server", Step::servers, takeLocalNetworkDNS, faultsOfServer},
    {"policyServer", "server", Step::servers, takePolicyServer, faultsOfServer},
    {"mappedDomains", "`[FRAGMENT:ADDRESS,FRAGMENT:ADDRESS:PORT]`", Step::domains,
     takeMappedDomains, faultsOfMappedDomains},
    {kAllowPackages, "texts between commas", Step::lists, takeAllowPackages, faultsOfApplications},
    {kJsonVars, "a JSON object as text", Step::lists, takeJsonVars, faultsOfJsonVars},
    {"allowAll", "`\"true\"`, as a text", Step::always, takeAllowAll, faultsOfSwitch},
    {"captivePortalIp", "addresses between commas", Step::lists, takeCaptivePortalIp,
     faultsOfAddresses},
};

}  // namespace

std::span<const VendorSetting> vendorSettings() { return kSettings; }

void applyVendorSettings(Step step, const Conf& conf, const Target& target) {
  for (const auto& setting : kSettings) {
    if (setting.step == step) {
      setting.apply(conf, target);
    }
  }
}

bool allowsAll(const Conf& conf) {
  const auto* text = settingIn(conf, "allowAll");
  return text != nullptr && *text == "true";
}

}  // namespace quillet
