#include "DnsProxyExt/SafeSearchDNSProxyProvider.h"
#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using platform::Data;
using test::FakeServer;
using test::hex;
using test::query;
using testing::Contains;
using testing::ElementsAre;
using testing::SizeIs;

/// Sends the query back as its own answer.
std::vector<Data> echo(const Data& received) {
  auto answer = received;
  if (answer.size() > 2) {
    answer[2] |= 0x80;
  }
  return {answer};
}

class RoutingTest : public test::ProviderTest {
 protected:
  RoutingTest() {
    provider_->filteringDNS = host(filtering_);
    provider_->secondDNS = host(second_);
    provider_->localNetworkDNS = host(localNetwork_);
    provider_->localDomainsMap = {{"corp.example", host(localDomain_)}};
    provider_->whitelistedDomainsMap = {{"corp.example", host(whitelisted_)},
                                        {"wiki", host(whitelisted_)}};
    log_.clear();
  }

  FakeServer filtering_{echo};
  FakeServer second_{echo};
  FakeServer localNetwork_{echo};
  FakeServer localDomain_{echo};
  FakeServer whitelisted_{echo};
};

TEST_F(RoutingTest, FirstRuleThatAppliesChoosesTheServer) {
  const auto mapped = [](const char* to, const FakeServer& server, const char* domain) {
    return to + server.text() + ", q: Optional(\"" + domain + "\")";
  };
  constexpr char kLocalDomain[] = "Mapped to use local DNS server - > connect to local  ";
  constexpr char kWhitelisted[] = "Mapped to use whitelisted DNS server - > connect to DNS  ";
  constexpr char kFiltering[] = "connect to DNS using Quillet DNS (";
  const std::string toSecond = "connect to 3th part DNS using 127.0.0.1";
  const struct {
    const char* app;
    const char* name;
    std::vector<std::string> allowed;
    bool allowAll;
    const FakeServer& server;
    std::string line;
  } rows[] = {
      {"com.apple.NSUpdate.x",
       "corp.example",
       {"apple"},
       true,
       localNetwork_,
       "connect to local network  DNS using 127.0.0.1"},
      {"my.browser.agent", "corp.example", {"x", "Browser"}, false, second_, toSecond},
      {"app", "corp.example", {}, true, second_, toSecond},
      {"app",
       "www.a.www.corp.example",
       {},
       false,
       localDomain_,
       mapped(kLocalDomain, localDomain_, "a.corp.example")},
      {"app",
       "mywiki.org",
       {},
       false,
       whitelisted_,
       mapped(kWhitelisted, whitelisted_, "mywiki.org")},
      // Letter case counts in domains.
      {"app", "WIKI.org", {}, false, filtering_, mapped(kFiltering, filtering_, "WIKI.org")},
      // An empty entry allows nothing.
      {"app", "b.org", {""}, false, filtering_, mapped(kFiltering, filtering_, "b.org")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    provider_->allowedApps = row.allowed;
    provider_->shouldAllowAll = row.allowAll;
    log_.clear();
    const auto sent = query(row.name);
    const auto before = row.server.received().size();
    const auto flow = makeFlow({sent}, row.app);
    serve(flow);
    EXPECT_THAT(log_.records(), Contains(row.line).Times(1));
    const auto received = row.server.received();
    ASSERT_THAT(received, SizeIs(before + 1));
    const bool isFiltering = &row.server == &filtering_;
    EXPECT_EQ(received.back() == sent, !isFiltering) << "only the filtering service gets identity";
    ASSERT_THAT(flow->written, SizeIs(1));
    EXPECT_EQ(flow->written[0].second, (platform::NWHostEndpoint{"127.0.0.1", "5300"}));
  }
}

TEST_F(RoutingTest, LocalNetworkAppsFollowTheOtherRulesWithoutAServer) {
  provider_->localNetworkDNS = nullptr;
  serve(makeFlow({query("a.org")}, "com.apple.nsupdate"));
  EXPECT_THAT(filtering_.received(), SizeIs(1));
}

TEST_F(RoutingTest, ForwardsWhatItCannotDecodeUnchanged) {
  const auto garbage = hex("12 34 01 00 00 02 00 00 00 00 00 00 01 61 00 00 01 00 01");
  ASSERT_TRUE(offer(makeFlow({garbage})));
  ASSERT_TRUE(runUntil([&] { return !filtering_.received().empty(); }));
  EXPECT_THAT(filtering_.received(), ElementsAre(garbage));
  EXPECT_THAT(log_.records(),
              Contains("connect to DNS using Quillet DNS (" + filtering_.text() + ", q: nil"));
}

TEST_F(RoutingTest, SendsNothingForAnIncompleteBatch) {
  const auto flow = makeFlow({query("a")});
  const auto safeSearch = std::make_shared<SafeSearchDNSProxyProvider>();
  log_.clear();
  for (const auto& provider : {provider_, std::shared_ptr<DnsProxyExt>(safeSearch)}) {
    provider->connectToDNS(flow, std::nullopt, flow->readEndpoints, std::nullopt);
    provider->connectToDNS(flow, std::vector<Data>(), flow->readEndpoints, std::nullopt);
    provider->connectToDNS(flow, flow->toRead, std::nullopt, std::nullopt);
    provider->connectToDNS(flow, flow->toRead, std::vector<platform::NWHostEndpoint>(),
                           std::nullopt);
  }
  EXPECT_TRUE(log_.records().empty());
}

TEST_F(RoutingTest, KeepsABoundedNumberOfReports) {
  provider_->filteringDNS = std::make_shared<Utils::DNSHost>("127.0.0.1:70000");
  const auto first = makeFlow({query("a")});
  offer(first);
  for (std::size_t i = 0; i < DnsProxyExt::kMaxReports; ++i) {
    offer(makeFlow({query("a")}));
  }
  ASSERT_TRUE(
      runUntil([&] { return provider_->dnsFlowsReports.size() == DnsProxyExt::kMaxReports; }));
  runReady();
  EXPECT_THAT(provider_->dnsFlowsReports, SizeIs(DnsProxyExt::kMaxReports));
  EXPECT_EQ(provider_->dnsFlowsReports.count(std::to_string(first->hash())), 0U);
}

}  // namespace
}  // namespace quillet
