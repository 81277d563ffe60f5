#include "DnsProxyExt/DnsProxyExt.h"
#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using platform::description;
using testing::ElementsAre;
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

TEST_F(DnsProxyExtTest, PrintsTheSettings) {
  start(R"({"allowPackages": "a,b", "localNetworkDNS": "10.0.0.3"})"_json);
  const auto before = relayed(5).size();
  log_.clear();
  provider_->printExtensionSettings();
  const std::string vendor = R"(["allowPackages": "a,b", "localNetworkDNS": "10.0.0.3"])";
  const auto atRelay = relayed(before + 6);
  const std::vector<std::string> lines{
      "vendorData: Optional(" + vendor + ")", "options: Optional([\"VendorData\": " + vendor + "])",
      "macosConfig options: " + vendor, R"(whitelistedApps: ["a", "b"])"};
  std::vector<std::string> expected = lines;
  expected.emplace_back("systemDnsSettings: nil");
  EXPECT_EQ(std::vector(log_.records().begin(), log_.records().begin() + 5), expected);
  expected = lines;
  expected.insert(expected.begin(), "systemDnsSettings: nil");
  expected.emplace_back(
      "localNetworkDNS: Optional(10.0.0.3:53), filteringDNS: 127.0.0.2:81, "
      "secondDNS:127.0.0.3:53");
  EXPECT_EQ(std::vector(atRelay.end() - 6, atRelay.end()), expected);
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
