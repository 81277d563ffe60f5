// A start takes vendor data and keeps it; what it decides is in settings/VendorSettings.

#include "DnsProxyExt/DnsProxyExt.h"
#include "DnsProxyExt/settings/GroupDefaults.h"
#include "platform/log/NSLog.h"

namespace quillet {

using platform::NSLog;

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
    store->setObject(*vendorData, GroupDefault::kStoredVendorData);
  }
  NSLog("opts: ", *vendorData);
  relayLog_.alone("opts:", *vendorData);
  return true;
}

// The stored settings are shown and not applied: a start without vendor data runs with what it has,
// so that settings which an administrator took back do not come to life again.
void DnsProxyExt::logStoredVendorData() const {
  NSLog("options(vendor data) are nil --> retrieving previous params from local storage");
  const auto* store = defaults();
  const auto stored =
      store != nullptr ? store->dictionaryForKey(GroupDefault::kStoredVendorData) : std::nullopt;
  NSLog("retrieved options: ", stored);
}

void DnsProxyExt::logUserEmail() const {
  const auto* store = defaults();
  const auto email =
      store != nullptr ? store->stringForKey(GroupDefault::kUserEmail) : std::nullopt;
  NSLog("users email from Content Filter:  ", email.value_or(""));
  if (!email || email->empty()) {
    return;
  }
  if (settingIn(macOSconfig, GroupDefault::kUserEmail) != nullptr) {
    NSLog("userEmail is not nil -> using userEmail from vendor");
  } else {
    NSLog("userEmail is nil -> using userEmail from local store");
  }
}

void DnsProxyExt::initLocalDomainsMap() {
  apply(VendorSetting::Step::domains);
  NSLog("initLocalDomainsMap - got map: ", localDomainsMap);
}

void DnsProxyExt::initVendorSettings() {
  using Step = VendorSetting::Step;
  apply(Step::always);
  useQuilletDNS();
  NSLog("initVendorSettings, vendorData: ", vendorData, ", macosConfig: ", macOSconfig);
  if (vendorData) {
    apply(Step::servers);
    NSLog("initVendorSettings1");
    apply(Step::lists);
  }
  NSLog("shouldAllowAll: ", shouldAllowAll, ", secondDNS = ", secondDNS,
        ", allowedApps = ", allowedApps, ", captivePortalIps = ", captivePortalIps);
}

void DnsProxyExt::apply(VendorSetting::Step step) {
  applyVendorSettings(step, macOSconfig, {routing, policyUDPServer, captivePortalIps});
}

bool DnsProxyExt::useQuilletDNS() const {
  const bool result = !allowsAll(macOSconfig);
  NSLog("useQuilletDNS: ", result);
  return result;
}

}  // namespace quillet
