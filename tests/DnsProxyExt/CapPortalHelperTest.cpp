#include "DnsProxyExt/CapPortalHelper.h"
#include "tests/DnsProxyExt/ProviderTest.h"
#include "tests/support/NetworkNamespace.h"

namespace quillet {
namespace {

using platform::Data;
using test::FakeServer;
using test::hex;
using test::query;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

class CapPortalHelperTest : public test::ProviderTest {
 protected:
  CapPortalHelperTest() { log_.clear(); }

  std::shared_ptr<CapPortalHelper> makeHelper(std::vector<std::string> ips) {
    auto helper = std::make_shared<CapPortalHelper>(std::move(ips));
    helper->port = first_.port();
    return helper;
  }

  [[nodiscard]] std::ptrdiff_t count(const std::string& record) const {
    return std::count(log_.records().begin(), log_.records().end(), record);
  }
  [[nodiscard]] auto registrations() const {
    return count("[CapPortalHelper]: sendCapPortalRegRequest");
  }
  bool runUntilReceived(std::size_t datagrams) {
    return runUntil([&] { return first_.received().size() >= datagrams; });
  }

  FakeServer first_{test::stayQuiet};
};

/// A registration but for its identifier: flags 0x0400, one question, one OPT record.
Data registration() {
  return hex(
      "04 00 00 01 00 00 00 00 00 01"
      "0e 63 61 70 74 69 76 65 2d 70 6f 72 74 61 6c 07 71 75 69 6c 6c 65 74"
      "07 65 78 61 6d 70 6c 65 00 00 01 00 01"
      "01 30 00 00 29 00 00 00 00 00 00 00 05 fd ef 00 01 31");
}

TEST_F(CapPortalHelperTest, RegistersWithEveryServerOnce) {
  const FakeServer second(test::stayQuiet, "127.0.0.2", first_.port());
  const FakeServer third(test::stayQuiet, "127.0.0.3", first_.port());
  const auto helper = makeHelper({"127.0.0.1", "127.0.0.2", "127.0.0.3"});
  helper->checkRegistration();
  const auto all = {&std::as_const(first_), &second, &third};
  ASSERT_TRUE(runUntil([&] {
    return std::all_of(all.begin(), all.end(),
                       [](const auto* server) { return server->received().size() == 1; });
  }));
  const auto sent = first_.received().front();
  EXPECT_THAT(second.received(), ElementsAre(sent));
  EXPECT_THAT(third.received(), ElementsAre(sent));
  EXPECT_EQ(Data(sent.begin() + 2, sent.end()), registration());
  EXPECT_THAT(
      std::vector(log_.records().begin(), log_.records().begin() + 5),
      ElementsAre("[CapPortalHelper]:: init,  ips - [\"127.0.0.1\", \"127.0.0.2\", \"127.0.0.3\"]",
                  "[CapPortalHelper]: - check Registration",
                  "[CapPortalHelper]: sendCapPortalRegRequest",
                  "[CapPortalHelper]:, sendCapPortalRegRequest, serializing query",
                  "[CapPortalHelper]:, sendCapPortalRegRequest, serialized data - 48"));
  EXPECT_THAT(log_.records(),
              Contains("[CapPortalHelper]:, sendCapPortalRegRequest, injected data - 1"));
  EXPECT_THAT(log_.records(),
              Contains("[CapPortalHelper]:, sendCapPortalRegRequest, connecting to 127.0.0.2"));
  EXPECT_THAT(log_.records(), Contains("init new UdpHandler").Times(3));
  EXPECT_THAT(log_.records(),
              Contains("[CapPortalHelper]:: Connecting to  udp, flowHash ").Times(3));
}

TEST_F(CapPortalHelperTest, RegistersAgainOnlyAfterTheInterval) {
  const auto helper = makeHelper({"127.0.0.1"});
  for (const auto& [seconds, registered] :
       {std::pair{0.0, 1}, {100.0, 1}, {140.0, 1}, {1.0, 2}, {240.0, 2}, {0.9, 3}}) {
    clock_.advanceSeconds(seconds);
    helper->checkRegistration();
    EXPECT_EQ(registrations(), registered) << seconds;
  }
  ASSERT_TRUE(runUntilReceived(3));
  const auto received = first_.received();
  EXPECT_FALSE(received[0] == received[1] && received[1] == received[2])
      << "each has an identifier of its own, but one in 65,536";
}

TEST_F(CapPortalHelperTest, AnAnswerStartsTheIntervalAnew) {
  first_.setAnswer([](const Data& /*received*/) { return std::vector<Data>{test::answerForA()}; });
  const auto helper = makeHelper({"127.0.0.1"});
  helper->checkRegistration();
  clock_.advanceSeconds(30);
  ASSERT_TRUE(runUntilLogged(
      "[CapPortalHelper]: - State: Cancelled,127.0.0.1:" + std::to_string(first_.port()) + " \n"));
  EXPECT_EQ(helper->lastRegistrationTime, 1'700'000'030);
  EXPECT_THAT(
      log_.records(),
      Contains(StartsWith("[CapPortalHelper]:, udp received, udp - DNS Response(id: 4660")));
  clock_.advanceSeconds(240);
  helper->checkRegistration();
  EXPECT_EQ(registrations(), 1);
  clock_.advanceSeconds(1);
  helper->checkRegistration();
  EXPECT_EQ(registrations(), 2);
}

TEST_F(CapPortalHelperTest, LogsWhatEachServerSays) {
  const struct {
    std::vector<Data> answers;
    const char* record;
  } rows[] = {
      {{Data{'o', 'k'}}, "[CapPortalHelper]:, udp received - ok"},
      {{Data{'o', 'k'}}, "error of deserialization"},
      {{Data{0xFF}}, "[CapPortalHelper]:, udp received - "},
      {{Data()}, "[CapPortalHelper]:, udp received  - data is nil"},
  };
  for (const auto& row : rows) {
    log_.clear();
    first_.setAnswer([&row](const Data& /*received*/) { return row.answers; });
    const auto helper = makeHelper({"127.0.0.1"});
    helper->checkRegistration();
    EXPECT_TRUE(runUntilLogged(row.record)) << row.record;
  }
  const auto helper = makeHelper({"127.0.0.1"});
  helper->port = test::closedPort();
  helper->checkRegistration();
  EXPECT_TRUE(
      runUntilLogged("[CapPortalHelper]:, udp error - Optional(\"POSIXErrorCode(rawValue: 111): "
                     "Connection refused\"), ip - 127.0.0.1"));
}

TEST_F(CapPortalHelperTest, TheProviderRegistersByItsFlows) {
  start(R"({"secondDNS": "127.0.0.1"})"_json);
  EXPECT_EQ(provider_->capPortalHelper, nullptr);
  EXPECT_THAT(log_.records(), Contains("capportal ips is empty"));
  log_.clear();
  start(R"({"captivePortalIp": "127.0.0.1,127.0.0.1"})"_json);
  ASSERT_NE(provider_->capPortalHelper, nullptr);
  EXPECT_THAT(log_.records(), Not(Contains("capportal ips is empty")));
  const auto created = std::find(log_.records().begin(), log_.records().end(),
                                 "Creating CapPortalHelper instance...");
  ASSERT_LT(created + 1, log_.records().end());
  EXPECT_EQ(created[1], "[CapPortalHelper]:: init,  ips - [\"127.0.0.1\", \"127.0.0.1\"]");
  EXPECT_EQ(registrations(), 0) << "nothing is registered at a start";

  provider_->capPortalHelper->port = first_.port();
  provider_->bypassAll = true;
  EXPECT_FALSE(offer(makeFlow({query("a")})));
  EXPECT_EQ(registrations(), 1) << "declined flows count";
  provider_->bypassAll = false;
  EXPECT_TRUE(offer(makeFlow({query("a")})));
  EXPECT_EQ(registrations(), 1);
  EXPECT_TRUE(runUntilReceived(2));
}

TEST_F(CapPortalHelperTest, TheListenerRegistersByTheNetwork) {
  const auto network = test::NetworkNamespace::enter();
  if (!network) {
    GTEST_SKIP() << "needs a network of its own";
  }
  const FakeServer portal(test::stayQuiet);
  const auto helper = makeHelper({"127.0.0.1"});
  helper->port = portal.port();
  std::vector<std::string> paths;
  helper->startConnectivityListener(
      [&](const platform::NWPath& path) { paths.push_back(platform::description(path)); });
  EXPECT_EQ(log_.records().back(),
            "[CapPortalHelper]:: current path: unsatisfied (No network route)");
  runReady();
  EXPECT_THAT(paths, ElementsAre("unsatisfied (No network route)"));
  EXPECT_EQ(registrations(), 1) << "without a network all the same";
  EXPECT_EQ(count("[CapPortalHelper]: path: unsatisfied (No network route)"), 1);
  EXPECT_EQ(count("[CapPortalHelper]: unsatisfied: No connection."), 1);
  EXPECT_FALSE(helper->doRegistrationTimer);

  if (!test::NetworkNamespace::ip("link add v0 type veth peer name v1")) {
    GTEST_SKIP() << "needs a pair of virtual interfaces";
  }
  test::NetworkNamespace::ip("link set v1 up");
  test::NetworkNamespace::ip("address add 10.9.9.1/24 dev v0");
  ASSERT_TRUE(test::NetworkNamespace::ip("link set v0 up"));
  ASSERT_TRUE(runUntil([&] {
    clock_.advanceSeconds(1);
    return paths.size() == 2;
  }));
  EXPECT_EQ(paths[1], "satisfied (Path is satisfied), interface: v0, ipv4");
  EXPECT_EQ(count("[CapPortalHelper]:  connected!"), 1);
  EXPECT_EQ(registrations(), 2);
  ASSERT_TRUE(helper->doRegistrationTimer && helper->doRegistrationTimer->isValid());
  clock_.advanceSeconds(238);  // one has passed above
  runReady();
  EXPECT_EQ(registrations(), 2);
  clock_.advanceSeconds(1);
  runReady();
  clock_.advanceSeconds(240);
  runReady();
  EXPECT_EQ(registrations(), 4);
  EXPECT_EQ(helper->lastRegistrationTime, 0) << "they do not count for the flows";

  helper->stopConnectivityListener();
  EXPECT_FALSE(helper->doRegistrationTimer->isValid());
  clock_.advanceSeconds(240);
  runReady();
  EXPECT_EQ(registrations(), 4);
}

}  // namespace
}  // namespace quillet
