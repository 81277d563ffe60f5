#include "DnsProxyExt/DnsProxyExt.h"
#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using platform::description;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class DnsProxyExtTest : public test::ProviderTest {};

TEST_F(DnsProxyExtTest, StartsWithTheBuildsValues) {
  EXPECT_EQ(description(provider_->filteringDNS), "127.0.0.2:81");
  EXPECT_EQ(description(provider_->secondDNS), "127.0.0.3:53");
  EXPECT_EQ(description(provider_->localNetworkDNS), "127.0.0.4:53");
  EXPECT_EQ(provider_->policyUDPServer, nullptr);
  EXPECT_THAT(provider_->localNetworkApps,
              ElementsAre("com.apple.opendirectoryd", "com.apple.nsupdate"));
  EXPECT_THAT(provider_->allowedApps, IsEmpty());
  EXPECT_FALSE(provider_->shouldAllowAll);
}

TEST_F(DnsProxyExtTest, LogsAStartWithoutOptions) {
  defaults_.write(R"({"mdmConf": {"k": "v"}, "userEmail": "u@x.example"})");
  log_.clear();
  start(std::nullopt);
  EXPECT_THAT(
      log_.records(),
      ElementsAre(
          StartsWith("DNS Proxy Provider, startProxy, instance id: <DnsProxyExt: "),
          "startProxy,options:nil", "startProxy,options - ttt:nil",
          "options(vendor data) are nil --> retrieving previous params from local storage",
          "retrieved options: Optional([\"k\": \"v\"])", "initLocalDomainsMap - got map: [:]",
          "users email from Content Filter:  u@x.example",
          "userEmail is nil -> using userEmail from local store",
          "initConfigurationForMacOs, confData = [:]", "init edns values confData = Optional([:])",
          "userAuthEnabled = true", "systemDNSSettings: nil", "useQuilletDNS: true",
          "initVendorSettings, vendorData: nil, macosConfig: [:]",
          "shouldAllowAll: false, secondDNS = 127.0.0.3:53, allowedApps = [], "
          "captivePortalIps = []",
          "initVendorSettings  - done", "capportal ips is empty", "initLocalUdp",
          "initLocalUdp - macos"));
}

TEST_F(DnsProxyExtTest, LogsAStartWithVendorData) {
  provider_->setSystemDNSSettings(std::vector<platform::NEDNSSettings>{});
  log_.clear();
  start(R"({"--allowAll": "true", "userEmail": "e", "n": 1})"_json);
  constexpr char kVendor[] = "[\"--allowAll\": \"true\", \"n\": 1, \"userEmail\": \"e\"]";
  constexpr char kConfig[] = "[\"allowAll\": \"true\", \"userEmail\": \"e\"]";
  const auto options = "Optional([\"VendorData\": " + std::string(kVendor) + "])";
  EXPECT_THAT(
      log_.records(),
      ElementsAre(
          StartsWith("DNS Proxy Provider, startProxy, instance id: "),
          "startProxy,options:" + options, "startProxy,options - ttt:" + options,
          "----vendor data----", "key:--allowAll: Optional(\"true\")", "key:n: Optional(1)",
          "key:userEmail: Optional(\"e\")", "opts: " + std::string(kVendor),
          "initLocalDomainsMap - got map: [:]", "users email from Content Filter:  ",
          "initConfigurationForMacOs, confData = " + std::string(kConfig),
          "init edns values confData = Optional(" + std::string(kConfig) + ")",
          "userAuthEnabled = true", "conf key = allowAll is not found",
          "systemDNSSettings: Optional([])", "useQuilletDNS: false",
          "initVendorSettings, vendorData: Optional(" + std::string(kVendor) +
              "), macosConfig: " + kConfig,
          "initVendorSettings1",
          "shouldAllowAll: true, secondDNS = 127.0.0.3:53, allowedApps = [], captivePortalIps = []",
          "initVendorSettings  - done", "capportal ips is empty", "initLocalUdp",
          "initLocalUdp - macos"));
  EXPECT_TRUE(provider_->shouldAllowAll);
  EXPECT_EQ(provider_->localNetworkDNS, nullptr);
  EXPECT_EQ(description(provider_->policyUDPServer), "127.0.0.5:2800");
  EXPECT_EQ(platform::UserDefaults::suite(DnsProxyExt::kGroupId)->dictionaryForKey("mdmConf"),
            provider_->vendorData);
}

TEST_F(DnsProxyExtTest, KeepsWhatNewSettingsDoNotName) {
  start(R"({"secondDNS": "10.0.0.1:54", "filteringDNS": "10.0.0.2", "localNetworkDNS": "10.0.0.3",
            "policyServer": "10.0.0.4:2801", "captivePortalIp": "10.0.0.5,10.0.0.6",
            "allowPackages": "a,b"})"_json);
  EXPECT_EQ(description(provider_->secondDNS), "10.0.0.1:54");
  EXPECT_EQ(description(provider_->filteringDNS), "10.0.0.2:53");
  EXPECT_EQ(description(provider_->localNetworkDNS), "10.0.0.3:53");
  EXPECT_EQ(description(provider_->policyUDPServer), "10.0.0.4:2801");
  start(R"({"captivePortalIp": ""})"_json);
  EXPECT_EQ(description(provider_->secondDNS), "10.0.0.1:54");
  EXPECT_EQ(description(provider_->filteringDNS), "10.0.0.2:53");
  EXPECT_EQ(provider_->localNetworkDNS, nullptr);
  EXPECT_EQ(description(provider_->policyUDPServer), "127.0.0.5:2800");
  EXPECT_THAT(provider_->captivePortalIps, ElementsAre("10.0.0.5", "10.0.0.6"));
  EXPECT_THAT(provider_->allowedApps, IsEmpty());
}

TEST_F(DnsProxyExtTest, TakesTheAllowedAppsFromWhereverTheyAre) {
  using Apps = std::vector<std::string>;
  const struct {
    const char* vendorData;
    Apps allowed;
  } rows[] = {
      {R"({"allowPackages": "x,y"})", {"x", "y"}},
      {R"({"jsonVars": "{\"allowPackages\": [\"a\", \"b\", 3]}", "allowPackages": "x,y"})",
       {"a", "b", "3"}},
      {R"({"jsonVars": "no JSON", "allowPackages": "x,y"})", {"x", "y"}},
      {R"({"jsonVars": "", "allowPackages": "x"})", {"x"}},
      {R"({"jsonVars": "[1]", "allowPackages": "x"})", {"before"}},
      {R"({"jsonVars": "{}", "allowPackages": "x"})", {"before"}},
      {R"({"jsonVars": "{\"allowPackages\": \"a\"}"})", {"before"}},
      {R"({})", {}},
  };
  for (const auto& row : rows) {
    provider_->allowedApps = {"before"};
    start(platform::JSONValue::parse(row.vendorData));
    EXPECT_EQ(provider_->allowedApps, row.allowed) << row.vendorData;
  }
}

TEST_F(DnsProxyExtTest, LogsTheVariablesOfTheAllowedApps) {
  start(R"({"jsonVars": "{\"allowPackages\": [\"a\"]}"})"_json);
  const auto records = log_.records();
  const auto first = std::find(records.begin(), records.end(), "initVendorSettings1");
  ASSERT_GE(records.end() - first, 3);
  EXPECT_EQ(first[1], R"(initVendorSettings2, jsonVars = {"allowPackages": ["a"]})");
  EXPECT_EQ(first[2], R"(initVendorSettings3, jsonDict = ["allowPackages": ["a"]])");
}

TEST_F(DnsProxyExtTest, VendorDataThatIsNoMapCountsAsMissing) {
  start(R"({"allowPackages": "x"})"_json);
  log_.clear();
  start(R"("text")"_json);
  EXPECT_THAT(log_.records(), Contains(StartsWith("options(vendor data) are nil")));
  EXPECT_EQ(description(provider_->vendorData), R"(Optional(["allowPackages": "x"]))");
  EXPECT_THAT(provider_->allowedApps, ElementsAre("x"));
}

TEST_F(DnsProxyExtTest, OnlyTheExactWordAllowsAll) {
  for (const char* word : {"True", "TRUE", "yes", ""}) {
    provider_->macOSconfig = {{"allowAll", word}};
    EXPECT_TRUE(provider_->useQuilletDNS()) << word;
  }
  provider_->macOSconfig = {{"allowAll", "true"}};
  EXPECT_FALSE(provider_->useQuilletDNS());
}

TEST_F(DnsProxyExtTest, TellsTheRelayOfItsStart) {
  ASSERT_THAT(relayed(1), ElementsAre("started")) << "there was no link before";
  EXPECT_EQ(platform::textOf(relay_.received()[0]),
            R"({"cmdType":"notification","payload":"started"})");
  start(R"({"allowAll": "true"})"_json);
  EXPECT_THAT(
      relayed(5),
      ElementsAre("started",
                  R"(startProxy,options - ttt:Optional(["VendorData": ["allowAll": "true"]]))",
                  R"(opts:["allowAll": "true"])",
                  R"(starting proxy - macos config:["allowAll": "true"])", "started"));
}

TEST_F(DnsProxyExtTest, SleepsWakesAndStops) {
  relayed(1);
  log_.clear();
  int completions = 0;
  provider_->sleep([&] { ++completions; });
  provider_->wake();
  provider_->stopProxy(platform::NEProviderStopReason::kUserInitiated, [&] { ++completions; });
  EXPECT_EQ(completions, 2);
  EXPECT_THAT(
      log_.records(),
      ElementsAre("sleep proxy", "wake proxy",
                  testing::MatchesRegex("stopProxy, reason: NEProviderStopReason.rawValue: 1., "
                                        "instance id - <DnsProxyExt: [0-9]+>")));
  provider_->wake();
  EXPECT_FALSE(provider_->printReportTimer);
  ASSERT_TRUE(runUntilLogged("Xpc Udp State: Cancelled\n"));
  EXPECT_THAT(relayed(5),
              ElementsAre("started", "sleep proxy", "wake proxy",
                          "stopProxy, reason: NEProviderStopReason(rawValue: 1)", "stopped"));
}

TEST_F(DnsProxyExtTest, ObeysACommandOfEachLink) {
  relayed(1);
  const struct {
    const char* datagram;
    bool bypassAll;
    const char* record;
  } rows[] = {
      {R"({"cmdType":"command","payload":"bypassAllOn"})", true, "Received command: bypassAllOn"},
      {R"({"cmdType":"command","payload":"BypassAllOff"})", true, "unknown XpcUdp command"},
      {R"({"cmdType":"printToLog","payload":"bypassAllOff"})", true, "default"},
      {R"({"cmdType":"command","payload":"bypassAllOff"})", false,
       "Received command: bypassAllOff"},
  };
  for (const auto& row : rows) {
    relay_.setAnswer([&row](const platform::Data& /*received*/) {
      const std::string_view text = row.datagram;
      return std::vector<platform::Data>{{text.begin(), text.end()}};
    });
    log_.clear();
    start(std::nullopt);
    EXPECT_TRUE(runUntilLogged(row.record)) << row.record;
    EXPECT_EQ(provider_->bypassAll, row.bypassAll) << row.datagram;
    ASSERT_TRUE(runUntilLogged("Xpc Udp State: Cancelled\n"));
  }
}

TEST_F(DnsProxyExtTest, AStoppedProviderGoesAway) {
  provider_->stopProxy(platform::NEProviderStopReason::kNone, [] {});
  const std::weak_ptr<DnsProxyExt> weak = provider_;
  provider_ = std::make_shared<DnsProxyExt>();
  runReady();
  EXPECT_TRUE(weak.expired());
}

}  // namespace
}  // namespace quillet
