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

TEST_F(DnsProxyExtTest, LogsTheWholeRoadOfAQuery) {
  const FakeServer server(answerA);
  start(R"({"organizationId": "org42"})"_json);
  provider_->filteringDNS = hostAt(server.text());
  // The policy was fetched a moment ago.
  provider_->fetchingPolicyIsStarted = true;
  provider_->lastPolicyFetchTime = 1'700'000'000;
  runReady();
  log_.clear();
  serve(std::make_shared<FakeFlow>(7, std::vector<Data>{query("a")}));
  ASSERT_TRUE(runUntilLogged("State: Cancelled, flowHash = 7\n"));
  auto logged = records();
  EXPECT_THAT(logged.at(0), testing::MatchesRegex("\\[DnsProxyExt\\] handleNewUDPFlow, instance id "
                                                  "- <DnsProxyExt: [0-9]+>"));
  logged.erase(logged.begin());
  auto text = linesOf(logged);
  text.replace(text.find(server.text()), server.text().size(), "SERVER");
  EXPECT_EQ(text, expectedText("DnsProxyExt/transcripts/query.txt"));
  EXPECT_THAT(server.received(),
              ElementsAre(hex(expectedText("DnsProxyExt/transcripts/query-sent.txt"))));
  auto atRelay = relayed(8);
  atRelay.erase(atRelay.begin(), atRelay.begin() + 5);
  EXPECT_EQ(linesOf(atRelay), expectedText("DnsProxyExt/transcripts/query-relayed.txt"));
}

TEST_F(DnsProxyExtTest, LogsTheErrorOfARefusedQuery) {
  provider_->filteringDNS = nobody();
  const std::vector<Data> two{query("a"), query("b")};
  offer(std::make_shared<FakeFlow>(7, two));
  const std::string error = "POSIXErrorCode(rawValue: 111): Connection refused";
  EXPECT_TRUE(runUntilLogged("udp socket error: " + error + ", flowHash = 7"));
  EXPECT_EQ(
      count("handleInBoundDatagram,hash = 7, isFinish = false, error = Optional(" + error + ")"), 1)
      << "one for all";
  const auto& report = provider_->dnsFlowsReports.at("7");
  EXPECT_TRUE(runUntil([&] { return report.keeper == nullptr; })) << "the exchange is over";
}

}  // namespace quillet::test
