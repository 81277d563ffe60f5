#include "DnsProxyExt/SafeSearchDNSProxyProvider.h"
#include "DnsProxyExt/registry/KeptReport.h"
#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet::test {

/// Keeps what goes to a server in place of sending it.
class RoutingTest : public ProviderTest {
 protected:
  struct Sent {
    Batch batch;
    std::string server;
    AnswerHandler handler;
  };

  RoutingTest() {
    for (const auto& provider : {provider_, safeSearch_}) {
      provider->upstream = [this](Batch batch, const Utils::DNSHost& server,
                                  AnswerHandler handler) {
        sent_.push_back({std::move(batch), server.description(), std::move(handler)});
      };
    }
    log_.clear();
  }

  const std::shared_ptr<DnsProxyExt> safeSearch_ = std::make_shared<SafeSearchDNSProxyProvider>();
  std::vector<Sent> sent_;
};

TEST_F(RoutingTest, SendsTheBatchWhereTheTableSays) {
  provider_->localDomainsMap = {{"a.corp", hostAt("10.0.0.4")}};
  provider_->allowedApps = {"browser"};
  const std::tuple<const char*, const char*, const char*, bool> rows[] = {
      {"com.apple.nsupdate", "a", "127.0.0.4:53", true},
      {"browser", "a", "127.0.0.3:53", true},
      {"app", "www.a.corp", "10.0.0.4:53", true},
      {"app", "a", "127.0.0.2:81", false}};
  for (const auto& [app, name, server, isUnchanged] : rows) {
    const auto flow = makeFlow({query(name), Data{1}}, app);
    offer(flow);
    runReady();
    ASSERT_FALSE(sent_.empty());
    EXPECT_EQ(sent_.back().server, server);
    EXPECT_EQ(sent_.back().batch.datagrams == flow->toRead, isUnchanged) << server;
    EXPECT_EQ(sent_.back().batch.endpoints, flow->readEndpoints);
  }
  EXPECT_EQ(count("dnshost address = 10.0.0.4"), 1);
  EXPECT_EQ(count("shouldAllowAll = false, useSecondDNS = true, app = browser, "
                  "allowedApps = [\"browser\"]"),
            1);
  EXPECT_THAT(relayed(8), IsSupersetOf({"connect to local network  DNS using 127.0.0.4",
                                        "connect to 3th part DNS using 127.0.0.3"}));
}

TEST_F(RoutingTest, OpensANewFlowAndReadsItEvenWhenThatFailed) {
  const auto flow = makeFlow({query("a")});
  flow->openError = platform::Error("no");
  ASSERT_TRUE(offer(flow));
  runReady();
  EXPECT_THAT(flow->opened, ElementsAre(platform::NWHostEndpoint{"127.0.0.2", "81"}))
      << "at the filtering service";
  EXPECT_THAT(provider_->flowManager.find(*flow)->errors, SizeIs(1));
  ASSERT_TRUE(offer(flow)) << "and reads it again when it is offered again";
  runReady();
  EXPECT_EQ(flow->reads, 2);
  EXPECT_THAT(flow->opened, SizeIs(1));
  EXPECT_THAT(sent_, SizeIs(2));
  EXPECT_EQ(count("handleNewUDPFlow - old flow, hash = " + std::to_string(flow->hash())), 1);
}

TEST_F(RoutingTest, SendsNothingForAnIncompleteBatch) {
  const auto flow = makeFlow({query("a")});
  const std::vector<Data> none;
  for (const auto& provider : {provider_, safeSearch_}) {
    provider->connectToDNS(flow, std::nullopt, flow->readEndpoints, {});
    provider->connectToDNS(flow, none, flow->readEndpoints, {});
    provider->connectToDNS(flow, flow->toRead, std::nullopt, {});
    provider->connectToDNS(flow, flow->toRead, std::vector<platform::NWHostEndpoint>(), {});
  }
  EXPECT_THAT(sent_, IsEmpty());
  EXPECT_EQ(count("datagram count = 1"), 2) << "what leads to the server is told";
}

TEST_F(RoutingTest, OfExchangesThatAreOverUnansweredTheLastReportsStay) {
  const auto flow = makeFlow({query("a")});
  for (int i = 0; i < 2; ++i) {
    provider_->connectToDNS(flow, flow->toRead, flow->readEndpoints, std::nullopt);
  }
  sent_.erase(sent_.begin());  // the other exchange of the flow is under way
  for (int i = 0; i < KeptReport::kMaxUnanswered + 1; ++i) {
    const auto other = makeFlow({query("a")});
    provider_->connectToDNS(other, other->toRead, other->readEndpoints, std::nullopt);
    sent_.pop_back();
  }
  EXPECT_THAT(provider_->dnsFlowsReports, SizeIs(KeptReport::kMaxUnanswered + 1));
  const auto key = std::to_string(flow->hash());
  EXPECT_TRUE(provider_->dnsFlowsReports.contains(key));
  EXPECT_FALSE(provider_->dnsFlowsReports.contains(std::to_string(flow->hash() + 1)));
  sent_.clear();
  EXPECT_FALSE(provider_->dnsFlowsReports.contains(key));
}

TEST_F(RoutingTest, SafeSearchTimesDecodesTwiceAndPassesOnTheError) {
  const auto flow = makeFlow({query("a")});
  const auto key = std::to_string(flow->hash());
  safeSearch_->connectToDNS(flow, flow->toRead, flow->readEndpoints, std::nullopt);
  EXPECT_EQ(sent_.at(0).server, "127.0.0.2:53");
  EXPECT_EQ(sent_.at(0).batch.datagrams, flow->toRead);
  EXPECT_EQ(safeSearch_->dnsFlowsReports.at(key).dnsServer, "127.0.0.2");
  sent_.at(0).handler({flow, std::nullopt, true, {}, {}});
  EXPECT_EQ(count("[SafeSearchDNSProxyProvider]: datagram data is nil"), 1);
  sent_.at(0).handler({flow, answerForA(), true, {}, platform::Error("upstream")});
  EXPECT_EQ(count("***decodeDNSResponse***,data size = 35, flowHash:" + key), 2);
  runReady();
  EXPECT_THAT(flow->closed, ElementsAre("read Optional(upstream)", "write Optional(upstream)"));
}

}  // namespace quillet::test
