#include "DnsProxyExt/upstream/CapPortalHelper.h"
#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using platform::Data;
using test::FakeServer;
using test::query;

class CapPortalHelperTest : public test::ProviderTest {
 protected:
  CapPortalHelperTest() { log_.clear(); }

  std::shared_ptr<CapPortalHelper> makeHelper() {
    auto helper = std::make_shared<CapPortalHelper>(std::vector<std::string>{"127.0.0.1"});
    helper->port = server_.port();
    return helper;
  }
  [[nodiscard]] auto registrations() const {
    return count("[CapPortalHelper]: sendCapPortalRegRequest");
  }

  FakeServer server_{test::stayQuiet};
};

TEST_F(CapPortalHelperTest, RegistersAgainOnlyAfterTheInterval) {
  const auto helper = makeHelper();
  helper->checkRegistration();
  const auto text = test::linesOf(log_.records());
  EXPECT_THAT(text, testing::StartsWith(R"([CapPortalHelper]:: init,  ips - ["127.0.0.1"]
[CapPortalHelper]: - check Registration
[CapPortalHelper]: sendCapPortalRegRequest
[CapPortalHelper]:, sendCapPortalRegRequest, serializing query
[CapPortalHelper]:, sendCapPortalRegRequest, serialized data - 48
)"));
  EXPECT_THAT(text, testing::EndsWith(R"(
[CapPortalHelper]:, sendCapPortalRegRequest, injected data - 1
[CapPortalHelper]:, sendCapPortalRegRequest, connecting to 127.0.0.1
init new UdpHandler
[CapPortalHelper]:: Connecting to  udp, flowHash 
)"));
  for (const auto& [seconds, registered] : {std::pair{240.0, 1}, {1.0, 2}, {240.9, 3}}) {
    clock_.advanceSeconds(seconds);
    helper->checkRegistration();
    EXPECT_EQ(registrations(), registered) << seconds;
  }
}

TEST_F(CapPortalHelperTest, LogsWhatAServerSaysAndStartsTheIntervalAnew) {
  const std::pair<Data, const char*> rows[] = {
      {{}, "[CapPortalHelper]:, udp received  - data is nil"},
      {{'o', 'k'}, "[CapPortalHelper]:, udp received - ok"},
      {{'o', 'k'}, "error of deserialization"},
      {{0xFF}, "[CapPortalHelper]:, udp received - "},
  };
  for (const auto& [answer, record] : rows) {
    log_.clear();
    server_.setAnswer(
        [bytes = answer](const Data& /*received*/) { return std::vector<Data>{bytes}; });
    const auto helper = makeHelper();
    helper->checkRegistration();
    helper->lastRegistrationTime = 0;
    ASSERT_TRUE(runUntilLogged(record)) << record;
    EXPECT_EQ(helper->lastRegistrationTime, answer.empty() ? 0 : 1'700'000'000);
  }
  const auto helper = makeHelper();
  helper->port = test::closedPort();
  helper->checkRegistration();
  EXPECT_TRUE(
      runUntilLogged("[CapPortalHelper]:, udp error - Optional(\"POSIXErrorCode(rawValue: 111): "
                     "Connection refused\"), ip - 127.0.0.1"));
}

TEST_F(CapPortalHelperTest, DeclinedFlowsOfTheProviderRegisterToo) {
  start(R"({"captivePortalIp": "127.0.0.1,127.0.0.1"})"_json);
  EXPECT_THAT(log_.records(), testing::Contains("Creating CapPortalHelper instance..."));
  EXPECT_EQ(registrations(), 0) << "nothing is registered at a start";
  provider_->capPortalHelper->port = server_.port();
  provider_->bypassAll = true;
  EXPECT_FALSE(offer(makeFlow({query("a")})));
  EXPECT_EQ(registrations(), 1);
  start(R"({"captivePortalIp": "127.0.0.2"})"_json);
  EXPECT_THAT(provider_->capPortalHelper->ips, testing::ElementsAre("127.0.0.2"));
}

TEST_F(CapPortalHelperTest, TheListenerRegistersByTheNetwork) {
  const auto helper = provider_->capPortalHelper = makeHelper();
  std::vector<std::string> paths;
  helper->startConnectivityListener(
      [&](const platform::NWPath& path) { paths.push_back(platform::description(path)); });
  ASSERT_TRUE(runUntil([&] { return paths.size() == 1; }));
  // From here on the network is the test's.
  helper->stopConnectivityListener();
  log_.clear();
  helper->monitor.pathUpdateHandler(platform::NWPath());
  EXPECT_EQ(count("[CapPortalHelper]: unsatisfied: No connection."), 1);
  EXPECT_EQ(registrations(), 1) << "without a network all the same";
  helper->monitor.pathUpdateHandler(
      platform::NWPath::from(*platform::SocketAddress::parse("127.0.0.1", 1)));
  EXPECT_EQ(count("[CapPortalHelper]:  connected!"), 1);
  EXPECT_EQ(paths.back(), "satisfied (Path is satisfied), interface: lo, ipv4");
  for (const auto& [seconds, registered] : {std::pair{239.0, 2}, {1.0, 3}, {240.0, 4}}) {
    clock_.advanceSeconds(seconds);
    runReady();
    EXPECT_EQ(registrations(), registered) << seconds;
  }
  EXPECT_EQ(helper->lastRegistrationTime, 0) << "they do not count for the flows";
  provider_->stopProxy(platform::NEProviderStopReason::kNone, [] {});
  clock_.advanceSeconds(240);
  runReady();
  EXPECT_EQ(registrations(), 4);
}

}  // namespace
}  // namespace quillet
