#include "tests/DnsProxyExt/ProviderTest.h"
#include "tests/support/ExpectedText.h"

namespace quillet::test {

/// The records of one query's whole road, in their order and words.
class OneQueryTest : public ProviderTest {};

/// Options 65001, 65004, 65006, 65007 and 65015, in the order of their codes.
constexpr char kInjected[] =
    "1234010000010000000000010161000001000101300000290000000000000040fde900056f72673432"
    "fdec00093132372e302e302e31fdee00104575726f70652f4c6a75626c6a616e61"
    "fdef000131fdf7000d31373030303030303030313233";

TEST_F(OneQueryTest, LogsItsWholeRoad) {
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
  EXPECT_THAT(server.received(), ElementsAre(hex(kInjected)));
  auto atRelay = relayed(8);
  atRelay.erase(atRelay.begin(), atRelay.begin() + 5);
  EXPECT_EQ(linesOf(atRelay), expectedText("DnsProxyExt/transcripts/query-relayed.txt"));
}

TEST_F(OneQueryTest, TheErrorOfARefusedOneIsLogged) {
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
