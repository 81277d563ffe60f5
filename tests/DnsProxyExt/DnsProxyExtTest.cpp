#include "DnsProxyExt/DnsProxyExt.h"
#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using platform::description;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class DnsProxyExtTest : public test::ProviderTest {};

TEST_F(DnsProxyExtTest, AStartWithoutVendorDataShowsWhatIsStored) {
  start(R"({"allowPackages": "x"})"_json);
  defaults_.write(R"({"mdmConf": {"k": "v"}, "userEmail": "u@x.example"})");
  log_.clear();
  start(R"("no map")"_json);
  EXPECT_THAT(
      log_.records(),
      testing::IsSupersetOf(
          {"options(vendor data) are nil --> retrieving previous params from local storage",
           "retrieved options: Optional([\"k\": \"v\"])",
           "users email from Content Filter:  u@x.example",
           "userEmail is nil -> using userEmail from local store", "capportal ips is empty"}));
  EXPECT_THAT(provider_->allowedApps, ElementsAre("x")) << "and does not apply it";
  EXPECT_EQ(description(provider_->vendorData), R"(Optional(["allowPackages": "x"]))");
}

TEST_F(DnsProxyExtTest, LogsAStartWithVendorData) {
  defaults_.write(R"({"userEmail": "u"})");
  provider_->setSystemDNSSettings(std::vector<platform::NEDNSSettings>{});
  log_.clear();
  start(R"({"--allowAll": "true", "userEmail": "e", "n": 1})"_json);
  const std::string vendor = R"(["--allowAll": "true", "n": 1, "userEmail": "e"])";
  const std::string config = R"(["allowAll": "true", "userEmail": "e"])";
  const auto options = "Optional([\"VendorData\": " + vendor + "])";
  EXPECT_THAT(
      log_.records(),
      ElementsAre(
          StartsWith("DNS Proxy Provider, startProxy, instance id: <DnsProxyExt: "),
          "startProxy,options:" + options, "startProxy,options - ttt:" + options,
          "----vendor data----", "key:--allowAll: Optional(\"true\")", "key:n: Optional(1)",
          "key:userEmail: Optional(\"e\")", "opts: " + vendor, "initLocalDomainsMap - got map: [:]",
          "users email from Content Filter:  u",
          "userEmail is not nil -> using userEmail from vendor",
          "initConfigurationForMacOs, confData = " + config,
          "init edns values confData = Optional(" + config + ")", "userAuthEnabled = true",
          "conf key = allowAll is not found", "systemDNSSettings: Optional([])",
          "useQuilletDNS: false",
          "initVendorSettings, vendorData: Optional(" + vendor + "), macosConfig: " + config,
          "initVendorSettings1",
          "shouldAllowAll: true, secondDNS = 127.0.0.3:53, allowedApps = [], captivePortalIps = []",
          "initVendorSettings  - done", "capportal ips is empty", "initLocalUdp",
          "initLocalUdp - macos"));
  EXPECT_TRUE(provider_->shouldAllowAll);
  EXPECT_EQ(provider_->defaults()->dictionaryForKey("mdmConf"), provider_->vendorData);
}

TEST_F(DnsProxyExtTest, KeepsWhatNewSettingsDoNotName) {
  const auto servers = [this] {
    return std::vector{description(provider_->secondDNS), description(provider_->filteringDNS),
                       description(provider_->localNetworkDNS),
                       description(provider_->policyUDPServer)};
  };
  EXPECT_THAT(servers(), ElementsAre("127.0.0.3:53", "127.0.0.2:81", "127.0.0.4:53", "nil"));
  start(R"({"secondDNS": "10.0.0.1:54", "filteringDNS": "10.0.0.2", "localNetworkDNS": "10.0.0.3",
            "policyServer": "10.0.0.4:2801", "captivePortalIp": "10.0.0.5,10.0.0.6",
            "allowPackages": "a,b", "mappedDomains": "[corp:10.1.1.1]"})"_json);
  EXPECT_EQ(description(provider_->localDomainsMap), R"(["corp": 10.1.1.1:53])");
  EXPECT_THAT(servers(), ElementsAre("10.0.0.1:54", "10.0.0.2:53", "10.0.0.3:53", "10.0.0.4:2801"));
  start(R"({"captivePortalIp": "", "allowAll": "True"})"_json);
  EXPECT_FALSE(provider_->shouldAllowAll) << "only the exact word does";
  EXPECT_THAT(servers(), ElementsAre("10.0.0.1:54", "10.0.0.2:53", "nil", "127.0.0.5:2800"));
  EXPECT_THAT(provider_->captivePortalIps, ElementsAre("10.0.0.5", "10.0.0.6"));
  EXPECT_THAT(provider_->allowedApps, IsEmpty());
  EXPECT_TRUE(provider_->localDomainsMap.empty());
}

TEST_F(DnsProxyExtTest, TakesTheAllowedAppsFromWhereverTheyAre) {
  const std::pair<const char*, std::vector<std::string>> rows[] = {
      {R"({"allowPackages": "x,y"})", {"x", "y"}},
      {R"({"jsonVars": "no JSON", "allowPackages": "x,y"})", {"x", "y"}},
      {R"({"jsonVars": "", "allowPackages": "x"})", {"x"}},
      {R"({"jsonVars": "[1]", "allowPackages": "x"})", {"before"}},
      {R"({"jsonVars": "{}", "allowPackages": "x"})", {"before"}},
      {R"({"jsonVars": "{\"allowPackages\": \"a\"}"})", {"before"}},
      {R"({"jsonVars": "{\"allowPackages\": [\"a\", 3]}", "allowPackages": "x"})", {"a", "3"}},
      {R"({"jsonVars": "{\"n\": 1e999, \"allowPackages\": [\"a\"]}"})", {"a"}},
      {R"({"jsonVars": "{\"allowPackages\": [\"a\", 1e999]}", "allowPackages": "x"})", {"before"}},
      {R"({"jsonVars": "[1e999]", "allowPackages": "x"})", {"before"}},
  };
  for (const auto& [vendorData, allowed] : rows) {
    provider_->allowedApps = {"before"};
    start(platform::JSONValue::parse(vendorData));
    EXPECT_EQ(provider_->allowedApps, allowed) << vendorData;
  }
  EXPECT_THAT(
      log_.records(),
      testing::IsSupersetOf({R"(initVendorSettings2, jsonVars = {"allowPackages": ["a", 3]})",
                             R"(initVendorSettings3, jsonDict = ["allowPackages": ["a", 3]])"}));
}

TEST_F(DnsProxyExtTest, TellsTheRelayOfItsStartAndStop) {
  start(R"({"allowAll": "true"})"_json);
  relayed(5);
  log_.clear();
  int completions = 0;
  provider_->sleep([&] { ++completions; });
  provider_->wake();
  provider_->stopProxy(platform::NEProviderStopReason::kUserInitiated, [&] { ++completions; });
  EXPECT_EQ(completions, 2);
  EXPECT_THAT(log_.records(),
              ElementsAre("sleep proxy", "wake proxy",
                          StartsWith("stopProxy, reason: NEProviderStopReason("
                                     "rawValue: 1), instance id - <DnsProxyExt: ")));
  EXPECT_THAT(
      relayed(9),
      ElementsAre("started",
                  R"(startProxy,options - ttt:Optional(["VendorData": ["allowAll": "true"]]))",
                  R"(opts:["allowAll": "true"])",
                  R"(starting proxy - macos config:["allowAll": "true"])", "started", "sleep proxy",
                  "wake proxy", "stopProxy, reason: NEProviderStopReason(rawValue: 1)", "stopped"));
  EXPECT_EQ(platform::textOf(relay_.received().back()),
            R"({"cmdType":"notification","payload":"stopped"})");
  EXPECT_TRUE(runUntilLogged("Xpc Udp State: Cancelled\n"));
}

}  // namespace
}  // namespace quillet
