#include "DnsProxyExt/SafeSearchDNSProxyProvider.h"
#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using platform::Data;
using test::query;
using testing::SizeIs;

/// At ports that are none, so that nothing is sent.
DNSHostRef server(const char* address) {
  return std::make_shared<Utils::DNSHost>(std::string(address) + ":70000");
}

class RoutingTest : public test::ProviderTest {
 protected:
  RoutingTest() {
    provider_->filteringDNS = server("10.0.0.1");
    provider_->secondDNS = server("10.0.0.2");
    provider_->localNetworkDNS = server("10.0.0.3");
    provider_->localDomainsMap = {{"corp.example", server("10.0.0.4")}};
    provider_->whitelistedDomainsMap = {{"corp.example", server("10.0.0.5")},
                                        {"wiki", server("10.0.0.5")}};
    log_.clear();
  }
};

TEST_F(RoutingTest, FirstRuleThatAppliesChoosesTheServer) {
  const std::string toLocalNetwork = "connect to local network  DNS using 10.0.0.3";
  const std::string toSecond = "connect to 3th part DNS using 10.0.0.2";
  const std::string toLocalDomain =
      "Mapped to use local DNS server - > connect to local  10.0.0.4:70000, q: ";
  const std::string toWhitelisted =
      "Mapped to use whitelisted DNS server - > connect to DNS  10.0.0.5:70000, q: ";
  const std::string toFiltering = "connect to DNS using Quillet DNS (10.0.0.1:70000, q: ";
  const struct {
    const char* app;
    Data query;
    std::string allowed;
    bool allowAll;
    std::string line;
  } rows[] = {
      {"com.apple.NSUpdate.x", query("corp.example"), "apple", true, toLocalNetwork},
      {"com.ärzte.browser", query("corp.example"), "ÄRZTE.B", false, toSecond},
      {"app", query("corp.example"), "x", true, toSecond},
      {"app", query("www.a.www.corp.example"), "x", false,
       toLocalDomain + "Optional(\"a.corp.example\")"},
      {"app", query("mywiki.org"), "x", false, toWhitelisted + "Optional(\"mywiki.org\")"},
      // Letter case counts in domains, an empty entry allows nothing.
      {"app", query("WIKI.org"), "", false, toFiltering + "Optional(\"WIKI.org\")"},
      {"app", test::hex("12 34 01"), "x", false, toFiltering + "nil"},
  };
  for (const auto& row : rows) {
    provider_->allowedApps = {"y", row.allowed};
    provider_->shouldAllowAll = row.allowAll;
    log_.clear();
    offer(makeFlow({row.query}, row.app));
    EXPECT_TRUE(runUntilLogged(row.line)) << row.line;
  }
  EXPECT_THAT(relayed(13), testing::IsSupersetOf({toLocalNetwork, toSecond, toSecond}));
  provider_->localNetworkDNS = nullptr;
  offer(makeFlow({query("a")}, "com.apple.nsupdate"));
  EXPECT_TRUE(runUntilLogged(toFiltering + "Optional(\"a\")"));
}

TEST_F(RoutingTest, SendsNothingForAnIncompleteBatch) {
  const auto flow = makeFlow({query("a")});
  const auto safeSearch = std::make_shared<SafeSearchDNSProxyProvider>();
  const auto connections = platform::NWConnection::openCount();
  for (const auto& provider : {provider_, std::shared_ptr<DnsProxyExt>(safeSearch)}) {
    provider->connectToDNS(flow, std::nullopt, flow->readEndpoints, std::nullopt);
    provider->connectToDNS(flow, std::vector<Data>(), flow->readEndpoints, std::nullopt);
    provider->connectToDNS(flow, flow->toRead, std::nullopt, std::nullopt);
    provider->connectToDNS(flow, flow->toRead, std::vector<platform::NWHostEndpoint>(),
                           std::nullopt);
  }
  EXPECT_EQ(platform::NWConnection::openCount(), connections);
  EXPECT_EQ(count("datagram count = 1"), 2) << "what leads to the server is told";
}

TEST_F(RoutingTest, AReportGoesWithItsConnection) {
  const auto refused = makeFlow({query("a")});
  provider_->filteringDNS =
      std::make_shared<Utils::DNSHost>("127.0.0.1:" + std::to_string(test::closedPort()));
  offer(refused);
  const auto key = std::to_string(refused->hash());
  ASSERT_TRUE(runUntilLogged("State: Cancelled, flowHash = " + key + "\n"));
  EXPECT_EQ(count("handleInBoundDatagram,hash = " + key +
                  ", isFinish = false, error = Optional("
                  "POSIXErrorCode(rawValue: 111): Connection refused)"),
            1);
  EXPECT_EQ(count("flow reports: [\"" + key + "\"]"), 1) << "there while its error is dealt with";
  EXPECT_THAT(provider_->dnsFlowsReports, testing::IsEmpty());

  // Not when another exchange of the flow is under way.
  const test::FakeServer silent(test::stayQuiet);
  provider_->filteringDNS = host(silent);
  provider_->xpcUdpHelper->closeConnection();
  const auto flow = makeFlow({query("a")});
  provider_->connectToDNS(flow, flow->toRead, flow->readEndpoints, std::nullopt);
  provider_->connectToDNS(flow, flow->toRead, flow->readEndpoints, std::nullopt);
  for (const auto left : {1U, 0U}) {
    ASSERT_TRUE(platform::OpenConnections::shared().cancelIdleLongest());
    runReady();
    EXPECT_THAT(provider_->dnsFlowsReports, SizeIs(left));
  }
}

}  // namespace
}  // namespace quillet
