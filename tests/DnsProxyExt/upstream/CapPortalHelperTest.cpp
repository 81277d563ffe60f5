#include "DnsProxyExt/upstream/CapPortalHelper.h"
#include "tests/DnsProxyExt/ProviderTest.h"
#include "tests/support/ExpectedText.h"

namespace quillet::test {

class CapPortalHelperTest : public ProviderTest {
 protected:
  CapPortalHelperTest() { log_.clear(); }

  std::shared_ptr<CapPortalHelper> makeHelper() {
    auto helper = std::make_shared<CapPortalHelper>(Texts{"127.0.0.1"});
    helper->port = server_.port();
    return helper;
  }
  [[nodiscard]] auto registrations() const {
    return count("[CapPortalHelper]: sendCapPortalRegRequest");
  }

  FakeServer server_{stayQuiet};
};

TEST_F(CapPortalHelperTest, RegistersAgainOnlyAfterTheInterval) {
  const auto helper = makeHelper();
  helper->checkRegistration();
  auto text = linesOf(log_.records());
  text.replace(text.find("hex data = ") + 11, 4, "ID");
  EXPECT_EQ(text, expectedText("DnsProxyExt/transcripts/registration.txt"));
  ASSERT_TRUE(runUntil([&] { return !server_.received().empty(); }));
  const auto& sent = server_.received().front();
  EXPECT_EQ(Data(sent.begin() + 2, sent.end()),
            hex("0400 0001 0000 0000 0001 0e 636170746976652d706f7274616c 07 7175696c6c6574 07 "
                "6578616d706c65"
                "00 0001 0001 01 30 00 0029 0000 00000000 0005 fdef 0001 31"));
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
      {{0xFF}, "[CapPortalHelper]:, udp received - "}};
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
  helper->port = platform::test::unusedPort();
  helper->checkRegistration();
  EXPECT_TRUE(
      runUntilLogged("[CapPortalHelper]:, udp error - Optional(\"POSIXErrorCode(rawValue: 111): "
                     "Connection refused\"), ip - 127.0.0.1"));
}

TEST_F(CapPortalHelperTest, DeclinedFlowsOfTheProviderRegisterToo) {
  start(R"({"captivePortalIp": "127.0.0.1,127.0.0.1"})"_json);
  EXPECT_THAT(log_.records(), Contains("Creating CapPortalHelper instance..."));
  EXPECT_EQ(registrations(), 0) << "nothing is registered at a start";
  provider_->capPortalHelper->port = server_.port();
  provider_->bypassAll = true;
  EXPECT_FALSE(offer(makeFlow({query("a")})));
  EXPECT_EQ(registrations(), 1);
  start(R"({"captivePortalIp": "127.0.0.2"})"_json);
  EXPECT_THAT(provider_->capPortalHelper->ips, ElementsAre("127.0.0.2"));
}

TEST_F(CapPortalHelperTest, TheListenerRegistersByTheNetwork) {
  const auto helper = provider_->capPortalHelper = makeHelper();
  Texts paths;
  helper->startConnectivityListener(
      [&](const platform::NWPath& path) { paths.push_back(description(path)); });
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

}  // namespace quillet::test
