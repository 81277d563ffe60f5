#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using platform::Data;
using test::FakeServer;
using test::hex;
using test::query;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::SizeIs;

/// Sends the query back as its own answer, so that a test sees which server answered.
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
  constexpr char kApp[] = "com.vendor.browser.agent";
  const struct {
    const char* what;
    const char* app;
    const char* name;
    std::vector<std::string> allowed;
    bool allowAll;
    const FakeServer& server;
    std::string line;
  } rows[] = {
      {"1: an application of the local network",
       "com.apple.NSUpdate.x",
       "corp.example",
       {"apple"},
       true,
       localNetwork_,
       "connect to local network  DNS using 127.0.0.1"},
      {"2: an allowed application",
       kApp,
       "corp.example",
       {"x", "Browser"},
       false,
       second_,
       "connect to 3th part DNS using 127.0.0.1"},
      {"2: everything allowed",
       kApp,
       "corp.example",
       {},
       true,
       second_,
       "connect to 3th part DNS using 127.0.0.1"},
      {"3: a local domain, mapped twice",
       kApp,
       "www.a.www.corp.example",
       {},
       false,
       localDomain_,
       "Mapped to use local DNS server - > connect to local  " + localDomain_.text() +
           ", q: Optional(\"a.corp.example\")"},
      {"4: a whitelisted domain",
       kApp,
       "mywiki.org",
       {},
       false,
       whitelisted_,
       "Mapped to use whitelisted DNS server - > connect to DNS  " + whitelisted_.text() +
           ", q: Optional(\"mywiki.org\")"},
      {"5: letter case counts in domains",
       kApp,
       "WIKI.org",
       {},
       false,
       filtering_,
       "connect to DNS using Quillet DNS (" + filtering_.text() + ", q: Optional(\"WIKI.org\")"},
      {"5: an empty entry allows nothing",
       kApp,
       "b.org",
       {""},
       false,
       filtering_,
       "connect to DNS using Quillet DNS (" + filtering_.text() + ", q: Optional(\"b.org\")"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
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
    EXPECT_EQ(flow->written[0].first[1], sent[1]);
    EXPECT_EQ(flow->written[0].second, (platform::NWHostEndpoint{"127.0.0.1", "5300"}));
  }
}

TEST_F(RoutingTest, LocalNetworkAppsFollowTheOtherRulesWithoutAServer) {
  provider_->localNetworkDNS = nullptr;
  serve(makeFlow({query("a.org")}, "com.apple.nsupdate"));
  EXPECT_THAT(filtering_.received(), SizeIs(1));
}

TEST_F(RoutingTest, TheMostParticularFragmentWins) {
  FakeServer particular(echo);
  provider_->localDomainsMap = {
      {"b", host(localDomain_)}, {"a.b", host(particular)}, {"", host(second_)}};
  serve(makeFlow({query("x.a.b.c")}));
  EXPECT_THAT(particular.received(), SizeIs(1));
  serve(makeFlow({query("q")}));
  EXPECT_THAT(second_.received(), SizeIs(0)) << "an empty fragment matches nothing";
}

TEST_F(RoutingTest, InjectsTheIdentityIntoEveryDatagram) {
  start(R"({"organizationId": "org42", "userId": "u1", "addAppSenderId": "yes"})"_json);
  provider_->filteringDNS = host(filtering_);
  serve(makeFlow({query("a", 1, 1), query("b", 28, 2)}, "app"));
  // Options 65001, 65003, 65004, 65005, 65006, 65007 and 65015, in the order of their codes.
  const std::string opt =
      "01 30 00 00 29 00 00 00 00 00 00 00 4d"
      "fd e9 00 05 6f 72 67 34 32"
      "fd eb 00 02 75 31"
      "fd ec 00 09 31 32 37 2e 30 2e 30 2e 31"
      "fd ed 00 03 61 70 70"
      "fd ee 00 10 45 75 72 6f 70 65 2f 4c 6a 75 62 6c 6a 61 6e 61"
      "fd ef 00 01 31"
      "fd f7 00 0d 31 37 30 30 30 30 30 30 30 30 31 32 33";
  EXPECT_THAT(filtering_.received(),
              ElementsAre(hex("12 01 01 00 00 01 00 00 00 00 00 01 01 61 00 00 01 00 01" + opt),
                          hex("12 02 01 00 00 01 00 00 00 00 00 01 01 62 00 00 1c 00 01" + opt)));
}

TEST_F(RoutingTest, ForwardsWhatItCannotDecodeUnchanged) {
  for (const auto& garbage :
       {hex("00"), hex("12 34 01 00 00 02 00 00 00 00 00 00 01 61 00 00 01 00 01"),
        Data(65'507, 0xFF)}) {
    log_.clear();
    const auto before = filtering_.received().size();
    ASSERT_TRUE(offer(makeFlow({garbage})));
    ASSERT_TRUE(runUntil([&] { return filtering_.received().size() > before; }));
    EXPECT_EQ(filtering_.received().back(), garbage);
    EXPECT_THAT(log_.records(), Contains("decodeDNSResponse error"));
    EXPECT_THAT(log_.records(), Contains("msg: nil"));
    EXPECT_THAT(log_.records(),
                Contains("connect to DNS using Quillet DNS (" + filtering_.text() + ", q: nil"));
  }
}

TEST_F(RoutingTest, SendsNothingForAnIncompleteBatch) {
  const auto flow = makeFlow({query("a")});
  provider_->connectToDNS(flow, std::nullopt, std::nullopt, std::nullopt);
  provider_->connectToDNS(flow, std::vector<Data>(), flow->readEndpoints, std::nullopt);
  provider_->connectToDNS(flow, flow->toRead, std::nullopt, std::nullopt);
  provider_->connectToDNS(flow, flow->toRead, std::vector<platform::NWHostEndpoint>(),
                          std::nullopt);
  EXPECT_TRUE(log_.records().empty());
  EXPECT_TRUE(provider_->dnsFlowsReports.empty());
}

TEST_F(RoutingTest, AServerThatIsNoneStopsNothing) {
  for (const char* text : {"10.0.0.1:70000", "10.0.0.1:-1", "no address:53", ""}) {
    provider_->filteringDNS = std::make_shared<Utils::DNSHost>(text);
    const auto flow = makeFlow({query("a")});
    ASSERT_TRUE(offer(flow)) << text;
    runReady();
    EXPECT_TRUE(flow->written.empty());
  }
  provider_->filteringDNS = host(filtering_);
  serve(makeFlow({query("a")}));
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
  EXPECT_EQ(provider_->dnsFlowsReports.size(), DnsProxyExt::kMaxReports);
  EXPECT_THAT(provider_->dnsFlowsReports,
              Not(Contains(testing::Key(std::to_string(first->hash())))));
}

}  // namespace
}  // namespace quillet
