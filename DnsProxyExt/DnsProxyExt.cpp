#include "DnsProxyExt/DnsProxyExt.h"

#include "platform/log/NSLog.h"
#include "platform/store/UserDefaults.h"

namespace quillet {

using platform::NSLog;
using platform::UserDefaults;

namespace {

std::int64_t nextInstanceNumber() {
  static std::int64_t last = 0;
  return ++last;
}

}  // namespace

DnsProxyExt::DnsProxyExt() : instanceNumber_(nextInstanceNumber()) {
  NSLog("DNSProxyProvider1, init");
  xpcCommandListener = [](const std::string& command) {
    NSLog("DNSProxy got the command: ", command);
  };
}

void DnsProxyExt::startProxy(std::optional<platform::NEProviderOptions> newOptions,
                             StartCompletion completion) {
  NSLog("DNS Proxy Provider, startProxy, instance id: ", identity());
  NSLog("startProxy,options:", newOptions);
  relayLog_.twice("startProxy,options - ttt:", newOptions);
  options = std::move(newOptions);
  if (!takeVendorData()) {
    logStoredVendorData();
  }
  initLocalDomainsMap();
  logUserEmail();
  MDMConfigurationManager::shared().initConfigurationForMacOs(macOSconfig);
  NSLog("systemDNSSettings: ", systemDNSSettings());
  relayLog_.alone("starting proxy - macos config:", macOSconfig);
  initVendorSettings();
  NSLog("initVendorSettings  - done");
  initCapPortalHelper();
  initLocalUdp();
  completion(std::nullopt);
}

UserDefaults* DnsProxyExt::groupDefaults() { return UserDefaults::suite(kGroupId); }

UserDefaults* DnsProxyExt::defaults() const { return groupDefaults(); }

void DnsProxyExt::initCapPortalHelper() {
  if (captivePortalIps.empty()) {
    NSLog("capportal ips is empty");
  } else {
    NSLog("Creating CapPortalHelper instance...");
    capPortalHelper = std::make_shared<CapPortalHelper>(captivePortalIps);
  }
}

void DnsProxyExt::initLocalUdp() {
  NSLog("initLocalUdp");
  NSLog("initLocalUdp - macos");
  xpcUdpHelper->connectToUDP(shared_from_this(), std::nullopt, std::nullopt, nullptr);
  xpcUdpHelper->proxyStateWasUpdated("started");
}

void DnsProxyExt::stopProxy(platform::NEProviderStopReason reason, StopCompletion completion) {
  NSLog("stopProxy, reason: ", reason, ", instance id - ", identity());
  relayLog_.alone("stopProxy, reason: ", reason);
  if (printReportTimer) {
    printReportTimer->invalidate();
    printReportTimer.reset();
  }
  xpcUdpHelper->proxyStateWasUpdated("stopped");
  xpcUdpHelper->closeConnection();
  xpcUdpHelper->appToExtDelegate.reset();
  if (capPortalHelper) {
    capPortalHelper->stopConnectivityListener();
  }
  completion();
}

void DnsProxyExt::sleep(StopCompletion completion) {
  relayLog_.twice("sleep proxy");
  completion();
}

void DnsProxyExt::wake() { relayLog_.twice("wake proxy"); }

void DnsProxyExt::receivedCommandFromApp(const XpcUdpCommand& msg) {
  if (msg.payload == "bypassAllOn") {
    bypassAll = true;
    NSLog("Received command: bypassAllOn");
  } else if (msg.payload == "bypassAllOff") {
    bypassAll = false;
    NSLog("Received command: bypassAllOff");
  } else {
    NSLog("unknown XpcUdp command");
  }
}

void DnsProxyExt::cfReceivedNewMessage(const std::string& /*msg*/) {}

void DnsProxyExt::printToUdpLogs(std::string_view log) const { relayLog_.print(log); }

void DnsProxyExt::printExtensionSettings() const {
  NSLog("vendorData: ", vendorData);
  NSLog("options: ", options);
  NSLog("macosConfig options: ", macOSconfig);
  NSLog("whitelistedApps: ", allowedApps);
  NSLog("systemDnsSettings: ", systemDNSSettings());
  relayLog_.alone("systemDnsSettings: ", systemDNSSettings());
  relayLog_.alone("vendorData: ", vendorData);
  relayLog_.alone("options: ", options);
  relayLog_.alone("macosConfig options: ", macOSconfig);
  relayLog_.alone("whitelistedApps: ", allowedApps);
  const auto localNetwork = localNetworkDNS ? std::optional(*localNetworkDNS) : std::nullopt;
  relayLog_.alone("localNetworkDNS: ", localNetwork, ", filteringDNS: ", filteringDNS,
                  ", secondDNS:", secondDNS);
}

// A running number in place of the object's address: as good for telling instances apart, and a log
// tells nothing of the process' memory.
std::string DnsProxyExt::identity() const {
  return std::string("<").append(className()) + ": " + std::to_string(instanceNumber_) + ">";
}

}  // namespace quillet
