#include "DnsProxyExt/DnsProxyExt.h"
#include "tests/DnsProxyExt/ProviderTest.h"
#include "tests/support/ExpectedText.h"

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

TEST_F(DnsProxyExtTest, LogsAStartWithVendorData) {
  defaults_.write(R"({"userEmail": "u"})");
  provider_->setSystemDNSSettings(std::vector<platform::NEDNSSettings>{});
  log_.clear();
  start(R"({"--allowAll": "true", "userEmail": "e", "n": 1})"_json);
  auto logged = log_.records();
  EXPECT_THAT(logged.at(0), StartsWith("DNS Proxy Provider, startProxy, instance id: <DnsProxy"));
  logged.erase(logged.begin());
  EXPECT_EQ(linesOf(logged), expectedText("DnsProxyExt/transcripts/start.txt"));
  EXPECT_TRUE(provider_->shouldAllowAll);
  EXPECT_EQ(provider_->defaults()->dictionaryForKey("mdmConf"), provider_->vendorData);
}

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
  logged.pop_back();
  EXPECT_EQ(linesOf(logged), expectedText("DnsProxyExt/transcripts/settings-to-stop.txt"));
  EXPECT_EQ(linesOf(relayed(15)),
            expectedText("DnsProxyExt/transcripts/start-to-stop-relayed.txt"));
  EXPECT_EQ(textOf(relay_.received().back()), R"({"cmdType":"notification","payload":"stopped"})");
  EXPECT_TRUE(runUntilLogged("Xpc Udp State: Cancelled\n"));
}

}  // namespace quillet::test
