// Vendor data becomes the settings that queries are routed by.

#include <DeploymentValues.h>

#include "DnsProxyExt/DnsProxyExt.h"
#include "DnsProxyExt/RelayLog.h"
#include "platform/base/CommaDelimited.h"
#include "platform/log/NSLog.h"
#include "platform/store/JSONDocument.h"
#include "platform/store/UserDefaults.h"

namespace quillet {

using platform::JSONFault;
using platform::NSLog;

namespace {

constexpr char kStoredVendorDataKey[] = "mdmConf";
constexpr char kUserEmailKey[] = "userEmail";
constexpr char kPolicyPort[] = "2800";

// An array or a number that goes beyond the reader's bounds is valid, and no object.
bool isValidJSON(JSONFault fault) {
  return fault == JSONFault::kTooDeep || fault == JSONFault::kNumberTooLarge;
}

DNSHostRef hostFrom(std::string_view text) { return std::make_shared<Utils::DNSHost>(text); }

}  // namespace

/// False when the options hold no vendor settings, or hold something else than an object under
/// their name.
bool DnsProxyExt::takeVendorData() {
  if (!options) {
    return false;
  }
  const auto found = options->find(kVendorDataOption);
  if (found == options->end() || !found->second.is_object()) {
    return false;
  }
  vendorData = found->second.get_ref<const platform::JSONObject&>();
  NSLog("----vendor data----");
  macOSconfig = MDMConfigurationManager::buildConfDictionary(*vendorData);
  if (auto* store = defaults()) {
    store->setObject(*vendorData, kStoredVendorDataKey);
  }
  NSLog("opts: ", *vendorData);
  logAtRelay("opts:", *vendorData);
  return true;
}

// The stored settings are shown and not applied: a start without vendor data runs with what it has,
// so that settings which an administrator took back do not come to life again.
void DnsProxyExt::logStoredVendorData() const {
  NSLog("options(vendor data) are nil --> retrieving previous params from local storage");
  const auto* store = defaults();
  const auto stored =
      store != nullptr ? store->dictionaryForKey(kStoredVendorDataKey) : std::nullopt;
  NSLog("retrieved options: ", stored);
}

void DnsProxyExt::logUserEmail() const {
  const auto* store = defaults();
  const auto email = store != nullptr ? store->stringForKey(kUserEmailKey) : std::nullopt;
  NSLog("users email from Content Filter:  ", email.value_or(""));
  if (!email || email->empty()) {
    return;
  }
  if (setting(kUserEmailKey) != nullptr) {
    NSLog("userEmail is not nil -> using userEmail from vendor");
  } else {
    NSLog("userEmail is nil -> using userEmail from local store");
  }
}

void DnsProxyExt::initVendorSettings() {
  shouldAllowAll = !useQuilletDNS();
  NSLog("initVendorSettings, vendorData: ", vendorData, ", macosConfig: ", macOSconfig);
  if (vendorData) {
    initServers();
    NSLog("initVendorSettings1");
    initAllowedApps();
    if (const auto* ips = setting("captivePortalIp"); ips != nullptr && !ips->empty()) {
      captivePortalIps = platform::parseCommaDelimitedArr(*ips);
    }
  }
  NSLog("shouldAllowAll: ", shouldAllowAll, ", secondDNS = ", secondDNS,
        ", allowedApps = ", allowedApps, ", captivePortalIps = ", captivePortalIps);
}

void DnsProxyExt::initServers() {
  if (const auto* text = setting("secondDNS")) {
    secondDNS = hostFrom(*text);
  }
  if (const auto* text = setting("filteringDNS")) {
    filteringDNS = hostFrom(*text);
  }
  const auto* localNetwork = setting("localNetworkDNS");
  localNetworkDNS = localNetwork != nullptr ? hostFrom(*localNetwork) : nullptr;
  const auto* policyServer = setting("policyServer");
  policyUDPServer = policyServer != nullptr ? hostFrom(*policyServer)
                                            : host(deployment::kPolicyServer, kPolicyPort);
}

// "jsonVars" without a list of packages leaves the list as it is, like one that is no object; so
// does one whose list goes beyond the reader's bounds.
void DnsProxyExt::initAllowedApps() {
  const auto* packages = setting("allowPackages");
  const auto packageList = packages != nullptr ? platform::parseCommaDelimitedArr(*packages)
                                               : std::vector<std::string>();
  const auto* jsonVars = setting("jsonVars");
  if (jsonVars == nullptr || jsonVars->empty()) {
    allowedApps = packageList;
    return;
  }
  NSLog("initVendorSettings2, jsonVars = ", *jsonVars);
  const auto json = platform::parseJSON(*jsonVars);
  if (!json && !isValidJSON(json.error())) {
    allowedApps = packageList;
    return;
  }
  if (!json || !json->value.is_object()) {
    return;
  }
  NSLog("initVendorSettings3, jsonDict = ", json->value);
  const auto list = json->value.find("allowPackages");
  if (list == json->value.end() || !list->is_array()) {
    return;
  }
  allowedApps.clear();
  for (const auto& package : *list) {
    allowedApps.push_back(platform::description(package));
  }
}

bool DnsProxyExt::useQuilletDNS() const {
  const auto* allowAll = setting("allowAll");
  const bool result = allowAll == nullptr || *allowAll != "true";
  NSLog("useQuilletDNS: ", result);
  return result;
}

const std::string* DnsProxyExt::setting(std::string_view key) const {
  const auto found = macOSconfig.find(std::string(key));
  return found == macOSconfig.end() ? nullptr : &found->second;
}

}  // namespace quillet
