#include "DnsProxyExt/SafeSearchDNSProxyProvider.h"
#include "tests/DnsProxyExt/ProviderTest.h"
#include "tests/support/NetworkNamespace.h"

namespace quillet {
namespace {

using platform::Data;
using test::FakeServer;
using test::query;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// In a network of its own, where the filtering service's address and port are free.
class SafeSearchDNSProxyProviderTest : public test::ProviderTest {
 protected:
  SafeSearchDNSProxyProviderTest() {
    const auto port = provider_->xpcUdpHelper->relayPort;
    provider_->stopProxy(platform::NEProviderStopReason::kNone, [] {});
    provider_ = std::make_shared<SafeSearchDNSProxyProvider>();
    provider_->xpcUdpHelper->relayPort = port;
  }

  void SetUp() override {
    if (!network_) {
      GTEST_SKIP() << "needs a network of its own";
    }
  }

  // First, so that what follows is in it.
  const std::unique_ptr<test::NetworkNamespace> network_ = test::NetworkNamespace::enter();
};

TEST_F(SafeSearchDNSProxyProviderTest, SendsEveryQueryUnchangedToTheStandardPort) {
  const FakeServer filtering(
      [](const Data& received) {
        auto answer = received;
        answer[2] |= 0x80;
        return std::vector<Data>{answer};
      },
      "127.0.0.2", 53);
  start(
      R"({"organizationId": "org42", "allowPackages": "app", "mappedDomains": "[corp:127.0.0.1:9]"})"_json);
  runReady();
  log_.clear();
  for (const char* app : {"com.example.app", "com.apple.nsupdate", "other"}) {
    const auto sent = query("www.corp");
    const auto flow = makeFlow({sent, query("b", 28)}, app);
    serve(flow);
    ASSERT_EQ(flow->written.size(), 2U);
    EXPECT_THAT(filtering.received(), testing::IsSupersetOf({sent, query("b", 28)}));
  }
  EXPECT_EQ(filtering.received().size(), 6U);
  EXPECT_THAT(provider_->dnsFlowsReports, IsEmpty());
  EXPECT_THAT(log_.records(), Not(Contains(StartsWith("connect to "))));
  EXPECT_THAT(log_.records(), Not(Contains(StartsWith("values for inject"))));
  EXPECT_THAT(log_.records(), Not(Contains("startFetchingPolicy")));
  EXPECT_THAT(log_.records(),
              Contains(testing::HasSubstr("dnsServer:Optional(\"127.0.0.2\")")).Times(3));
}

TEST_F(SafeSearchDNSProxyProviderTest, LogsAnAnswerWithoutBytesAndWritesNothing) {
  const auto flow = makeFlow({query("a")});
  ASSERT_TRUE(offer(flow));
  ASSERT_TRUE(runUntilLogged("[SafeSearchDNSProxyProvider]: datagram data is nil"));
  EXPECT_THAT(flow->written, IsEmpty());
  EXPECT_THAT(flow->closed, IsEmpty());
}

TEST_F(SafeSearchDNSProxyProviderTest, FetchesThePolicyAtTheSecondFlowOnly) {
  start(R"({"organizationId": "org42"})"_json);
  log_.clear();
  offer(makeFlow({query("a")}));
  EXPECT_THAT(log_.records(), Not(Contains("fetchPolicy")));
  EXPECT_TRUE(provider_->fetchingPolicyIsStarted);
  offer(makeFlow({query("a")}));
  EXPECT_THAT(log_.records(), Contains("fetchPolicy").Times(1));
}

TEST_F(SafeSearchDNSProxyProviderTest, SendsNothingForAnIncompleteBatch) {
  log_.clear();
  provider_->connectToDNS(makeFlow({}), std::nullopt, std::nullopt, std::nullopt);
  EXPECT_THAT(log_.records(), IsEmpty());
}

}  // namespace
}  // namespace quillet
