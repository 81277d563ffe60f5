#include "DnsProxyExt/DnsProxyExt.h"

#include <DeploymentValues.h>

#include "DnsProxyExt/CommaDelimited.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/UserDefaults.h"

namespace quillet {

using platform::NSLog;
using platform::UserDefaults;

namespace {

constexpr char kVendorDataOption[] = "VendorData";
constexpr char kStoredVendorDataKey[] = "mdmConf";
constexpr char kUserEmailKey[] = "userEmail";

DNSHostRef host(std::string_view text) { return std::make_shared<Utils::DNSHost>(text); }

DNSHostRef host(const char* address, const char* port) {
  return host(std::string(address) + ":" + port);
}

DNSHostRef defaultPolicyServer() { return host(deployment::kPolicyServer, "2800"); }

std::int64_t nextInstanceNumber() {
  static std::int64_t last = 0;
  return ++last;
}

}  // namespace

DnsProxyExt::DnsProxyExt()
    : filteringDNS(host(deployment::kFilteringDns, "81")),
      secondDNS(host(deployment::kSecondDns, "53")),
      localNetworkDNS(host(deployment::kLocalNetworkDns, "53")),
      instanceNumber_(nextInstanceNumber()) {
  NSLog("DNSProxyProvider1, init");
  xpcCommandListener = [](const std::string& command) {
    NSLog("DNSProxy got the command: ", command);
  };
}

void DnsProxyExt::startProxy(std::optional<platform::NEProviderOptions> newOptions,
                             StartCompletion completion) {
  NSLog("DNS Proxy Provider, startProxy, instance id: ", identity());
  NSLog("startProxy,options:", newOptions);
  NSLog("startProxy,options - ttt:", newOptions);
  options = std::move(newOptions);
  if (!takeVendorData()) {
    logStoredVendorData();
  }
  logUserEmail();
  MDMConfigurationManager::shared().initConfigurationForMacOs(macOSconfig);
  NSLog("systemDNSSettings: ", systemDNSSettings());
  initVendorSettings();
  NSLog("initVendorSettings  - done");
  completion(std::nullopt);
}

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
  if (auto* defaults = UserDefaults::suite(kGroupId)) {
    defaults->setObject(*vendorData, kStoredVendorDataKey);
  }
  NSLog("opts: ", *vendorData);
  return true;
}

// The stored settings are shown and not applied: a start without vendor data runs with what it has,
// so that settings which an administrator took back do not come to life again.
void DnsProxyExt::logStoredVendorData() const {
  NSLog("options(vendor data) are nil --> retrieving previous params from local storage");
  const auto* defaults = UserDefaults::suite(kGroupId);
  const auto stored =
      defaults != nullptr ? defaults->dictionaryForKey(kStoredVendorDataKey) : std::nullopt;
  NSLog("retrieved options: ", stored);
}

void DnsProxyExt::logUserEmail() const {
  const auto* defaults = UserDefaults::suite(kGroupId);
  const auto email = defaults != nullptr ? defaults->stringForKey(kUserEmailKey) : std::nullopt;
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
      captivePortalIps = parseCommaDelimitedArr(*ips);
    }
  }
  NSLog("shouldAllowAll: ", shouldAllowAll, ", secondDNS = ", secondDNS,
        ", allowedApps = ", allowedApps, ", captivePortalIps = ", captivePortalIps);
}

void DnsProxyExt::initServers() {
  if (const auto* text = setting("secondDNS")) {
    secondDNS = host(*text);
  }
  if (const auto* text = setting("filteringDNS")) {
    filteringDNS = host(*text);
  }
  const auto* localNetwork = setting("localNetworkDNS");
  localNetworkDNS = localNetwork != nullptr ? host(*localNetwork) : nullptr;
  const auto* policyServer = setting("policyServer");
  policyUDPServer = policyServer != nullptr ? host(*policyServer) : defaultPolicyServer();
}

// "jsonVars" without a list of packages leaves the list as it is, like one that is no object.
void DnsProxyExt::initAllowedApps() {
  const auto* packages = setting("allowPackages");
  const auto packageList =
      packages != nullptr ? parseCommaDelimitedArr(*packages) : std::vector<std::string>();
  const auto* jsonVars = setting("jsonVars");
  if (jsonVars == nullptr || jsonVars->empty()) {
    allowedApps = packageList;
    return;
  }
  NSLog("initVendorSettings2, jsonVars = ", *jsonVars);
  const auto json = platform::parseJSON(*jsonVars);
  if (!json) {
    allowedApps = packageList;
    return;
  }
  if (!json->is_object()) {
    return;
  }
  NSLog("initVendorSettings3, jsonDict = ", *json);
  const auto list = json->find("allowPackages");
  if (list == json->end() || !list->is_array()) {
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

void DnsProxyExt::stopProxy(platform::NEProviderStopReason reason, StopCompletion completion) {
  NSLog("stopProxy, reason: ", reason, ", instance id - ", identity());
  completion();
}

void DnsProxyExt::sleep(StopCompletion completion) {
  NSLog("sleep proxy");
  completion();
}

void DnsProxyExt::wake() { NSLog("wake proxy"); }

const std::string* DnsProxyExt::setting(std::string_view key) const {
  const auto found = macOSconfig.find(std::string(key));
  return found == macOSconfig.end() ? nullptr : &found->second;
}

// A running number in place of the object's address: as good for telling instances apart, and a log
// tells nothing of the process' memory.
std::string DnsProxyExt::identity() const {
  return "<DnsProxyExt: " + std::to_string(instanceNumber_) + ">";
}

}  // namespace quillet
