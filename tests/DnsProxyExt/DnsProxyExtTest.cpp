#include "DnsProxyExt/DnsProxyExt.h"
#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet::test {

using platform::NEProviderStopReason;

class DnsProxyExtTest : public ProviderTest {};

TEST_F(DnsProxyExtTest, AStartWithoutVendorDataShowsWhatIsStored) {
  start(R"({"allowPackages": "x"})"_json);
  defaults_.write(R"({"mdmConf": {"k": "v"}, "userEmail": "u@x.example"})");
  log_.clear();
  start(R"("no map")"_json);
  EXPECT_THAT(
      log_.records(),
      IsSupersetOf(
          {"options(vendor data) are nil --> retrieving previous params from local storage",
           "retrieved options: Optional([\"k\": \"v\"])",
           "users email from Content Filter:  u@x.example",
           "userEmail is nil -> using userEmail from local store", "capportal ips is empty"}));
  EXPECT_THAT(provider_->allowedApps, ElementsAre("x")) << "and does not apply it";
  EXPECT_EQ(description(provider_->vendorData), R"(Optional(["allowPackages": "x"]))");
}

constexpr char kStart[] =
    R"(startProxy,options:Optional(["VendorData": ["--allowAll": "true", "n": 1, "userEmail": "e"]])
startProxy,options - ttt:Optional(["VendorData": ["--allowAll": "true", "n": 1, "userEmail": "e"]])
----vendor data----
key:--allowAll: Optional("true")
key:n: Optional(1)
key:userEmail: Optional("e")
opts: ["--allowAll": "true", "n": 1, "userEmail": "e"]
initLocalDomainsMap - got map: [:]
users email from Content Filter:  u
userEmail is not nil -> using userEmail from vendor
initConfigurationForMacOs, confData = ["allowAll": "true", "userEmail": "e"]
init edns values confData = Optional(["allowAll": "true", "userEmail": "e"])
userAuthEnabled = true
conf key = allowAll is not found
systemDNSSettings: Optional([])
useQuilletDNS: false
initVendorSettings, vendorData: Optional(["--allowAll": "true", "n": 1, "userEmail": "e"]), macosConfig: ["allowAll": "true", "userEmail": "e"]
initVendorSettings1
shouldAllowAll: true, secondDNS = 127.0.0.3:53, allowedApps = [], captivePortalIps = []
initVendorSettings  - done
capportal ips is empty
initLocalUdp
initLocalUdp - macos
)";

TEST_F(DnsProxyExtTest, LogsAStartWithVendorData) {
  defaults_.write(R"({"userEmail": "u"})");
  provider_->setSystemDNSSettings(std::vector<platform::NEDNSSettings>{});
  log_.clear();
  start(R"({"--allowAll": "true", "userEmail": "e", "n": 1})"_json);
  auto logged = log_.records();
  EXPECT_THAT(logged.at(0), StartsWith("DNS Proxy Provider, startProxy, instance id: <DnsProxy"));
  logged.erase(logged.begin());
  EXPECT_EQ(linesOf(logged), kStart);
  EXPECT_TRUE(provider_->shouldAllowAll);
  EXPECT_EQ(provider_->defaults()->dictionaryForKey("mdmConf"), provider_->vendorData);
}

constexpr char kRelayed[] = R"(started
startProxy,options - ttt:Optional(["VendorData": ["allowPackages": "a,b"]])
opts:["allowPackages": "a,b"]
starting proxy - macos config:["allowPackages": "a,b"]
started
systemDnsSettings: nil
vendorData: Optional(["allowPackages": "a,b"])
options: Optional(["VendorData": ["allowPackages": "a,b"]])
macosConfig options: ["allowPackages": "a,b"]
whitelistedApps: ["a", "b"]
localNetworkDNS: nil, filteringDNS: 127.0.0.2:81, secondDNS:127.0.0.3:53
sleep proxy
wake proxy
stopProxy, reason: NEProviderStopReason(rawValue: 1)
stopped
)";

TEST_F(DnsProxyExtTest, TellsTheRelayOfItsStartItsSettingsAndItsStop) {
  start(R"({"allowPackages": "a,b"})"_json);
  relayed(5);
  log_.clear();
  int completions = 0;
  provider_->printExtensionSettings();
  provider_->sleep([&] { ++completions; });
  provider_->wake();
  provider_->stopProxy(NEProviderStopReason::kUserInitiated, [&] { ++completions; });
  EXPECT_EQ(completions, 2);
  auto logged = records();
  logged.resize(8);
  EXPECT_THAT(logged.back(), StartsWith("stopProxy, reason: NEProviderStopReason(rawValue: 1), "
                                        "instance id - <DnsProxy"));
  EXPECT_THAT(logged,
              IsSupersetOf({"systemDnsSettings: nil", "sleep proxy", "wake proxy",
                            R"(vendorData: Optional(["allowPackages": "a,b"]))",
                            R"(options: Optional(["VendorData": ["allowPackages": "a,b"]]))",
                            R"(macosConfig options: ["allowPackages": "a,b"])",
                            R"(whitelistedApps: ["a", "b"])"}));
  EXPECT_EQ(linesOf(relayed(15)), kRelayed);
  EXPECT_EQ(textOf(relay_.received().back()), R"({"cmdType":"notification","payload":"stopped"})");
  EXPECT_TRUE(runUntilLogged("Xpc Udp State: Cancelled\n"));
}

}  // namespace quillet::test
