#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DnsProxyExt/AppToExtDelegate.h"
#include "DnsProxyExt/XpcUdpHelper.h"
#include "platform/dispatch/MainLoop.h"
#include "tests/support/FakeServer.h"
#include "tests/support/LogCapture.h"

namespace quillet {
namespace {

using platform::Data;
using platform::NWConnection;
using test::FakeServer;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr char kBypassOn[] = R"({"cmdType":"command","payload":"bypassAllOn"})";

Data data(std::string_view text) { return {text.begin(), text.end()}; }

/// Keeps the commands that it is given.
struct FakeProvider : AppToExtDelegate {
  void cfReceivedNewMessage(const std::string& /*msg*/) override {}
  void receivedCommandFromApp(const XpcUdpCommand& msg) override { commands.push_back(msg); }

  std::vector<XpcUdpCommand> commands;
};

class XpcUdpHelperTest : public testing::Test {
 protected:
  ~XpcUdpHelperTest() override {
    helper_->closeConnection();
    runReady();
  }

  void connect(const FakeServer& server, std::optional<std::string> request = std::nullopt) {
    helper_->connectToUDP(
        provider_, static_cast<std::uint16_t>(server.port()), std::move(request),
        [this](std::optional<std::string> reply, const std::optional<platform::Error>& error) {
          EXPECT_EQ(error, std::nullopt);
          replies_.push_back(std::move(reply).value());
        });
  }

  static bool runUntil(const std::function<bool()>& done) {
    return platform::MainLoop::shared().runUntil(done);
  }
  static void runReady() { platform::MainLoop::shared().runReady(); }
  bool runUntilLogged(const std::string& record) {
    return runUntil([&] { return count(record) > 0; });
  }
  [[nodiscard]] std::ptrdiff_t count(const std::string& record) const {
    return std::count(log_.records().begin(), log_.records().end(), record);
  }
  static std::vector<std::string> texts(const FakeServer& server) {
    std::vector<std::string> result;
    for (const auto& datagram : server.received()) {
      result.emplace_back(platform::textOf(datagram));
    }
    return result;
  }

  test::LogCapture log_;
  std::shared_ptr<FakeProvider> provider_ = std::make_shared<FakeProvider>();
  std::shared_ptr<XpcUdpHelper> helper_ = std::make_shared<XpcUdpHelper>();
  std::vector<std::string> replies_;
};

TEST_F(XpcUdpHelperTest, SendsFromTheMomentItConnects) {
  const FakeServer relay(test::stayQuiet);
  connect(relay, "&*requestCU");
  helper_->proxyStateWasUpdated("started");
  ASSERT_TRUE(runUntil([&] { return relay.received().size() == 2; }));
  helper_->printLogToFile("a \"line\"\n");
  ASSERT_TRUE(runUntil([&] { return relay.received().size() == 3; }));
  EXPECT_THAT(texts(relay), testing::UnorderedElementsAre(
                                R"({"cmdType":"notification","payload":"started"})", "&*requestCU",
                                R"({"cmdType":"printToLog","payload":"a \"line\"\n"})"));
  runReady();
  EXPECT_THAT(log_.records(),
              ElementsAre("Xpc Udp State: Setup\n", "Xpc Udp State: Preparing\n",
                          "Xpc Udp State: Ready\n", "*Xpc Udp Data was sent to UDP*",
                          "*Xpc Udp Data was sent to UDP*", "*Xpc Udp Data was sent to UDP*"));
}

TEST_F(XpcUdpHelperTest, AReplyEndsTheAssociationAndIsNotObeyed) {
  const FakeServer relay([](const Data& /*received*/) {
    return std::vector<Data>{data("&*\xFF{}"), data(kBypassOn)};
  });
  connect(relay, "q");
  ASSERT_TRUE(runUntilLogged("Xpc Udp State: Cancelled\n"));
  EXPECT_THAT(replies_, ElementsAre("&*\uFFFD{}"));
  EXPECT_THAT(log_.records(), Contains("*Xpc Udp Received message: &*\uFFFD{}"));
  ASSERT_NE(helper_->connection, nullptr);
  EXPECT_EQ(helper_->connection->state().kind, NWConnection::State::Kind::cancelled);
  helper_->printLogToFile("later");
  runReady();
  EXPECT_EQ(count("*Xpc Udp Receive is complete*"), 1);
  EXPECT_THAT(provider_->commands, IsEmpty());
  EXPECT_THAT(
      log_.records(),
      testing::Not(Contains(testing::StartsWith("Xpc Udp Received message is no command"))));
}

TEST_F(XpcUdpHelperTest, HandsACommandToTheProvider) {
  const FakeServer relay(
      [](const Data& /*received*/) { return std::vector<Data>{data(kBypassOn)}; });
  connect(relay, "q");
  ASSERT_TRUE(runUntil([&] { return !provider_->commands.empty(); }));
  EXPECT_THAT(provider_->commands,
              ElementsAre(XpcUdpCommand{XpcUdpCommandParser::CmdType::command, "bypassAllOn"}));
  EXPECT_THAT(replies_, ElementsAre(kBypassOn));
}

TEST_F(XpcUdpHelperTest, DropsWhatIsNoCommandOfItsOwn) {
  const struct {
    const char* datagram;
    const char* lastRecord;
  } rows[] = {
      {R"({"cmdType":"printToLog","payload":"bypassAllOn"})", "default"},
      {R"({"cmdType":"notification","payload":"started"})", "default"},
      {R"({"cmdType":"Command","payload":"bypassAllOn"})",
       "Xpc Udp Received message is no command, 45 bytes"},
      {"hello", "Xpc Udp Received message is no command, 5 bytes"},
      {"\xFF\xFF", "Xpc Udp Received message is no command, 2 bytes"},
      {"", "Xpc Udp Data == nil"},
  };
  for (const auto& row : rows) {
    log_.clear();
    const FakeServer relay(
        [&row](const Data& /*received*/) { return std::vector<Data>{data(row.datagram)}; });
    connect(relay, "q");
    ASSERT_TRUE(runUntilLogged(row.lastRecord)) << row.datagram;
    runReady();
    EXPECT_THAT(provider_->commands, IsEmpty());
  }
}

TEST_F(XpcUdpHelperTest, WithoutADelegateACommandIsDropped) {
  helper_->handle({XpcUdpCommandParser::CmdType::command, "bypassAllOn"});
  EXPECT_THAT(log_.records(), IsEmpty());
}

TEST_F(XpcUdpHelperTest, WithoutARelayEverySendIsOneLine) {
  helper_->connectToUDP(static_cast<std::uint16_t>(test::closedPort()));
  for (int i = 0; i < 10; ++i) {
    helper_->printLogToFile("a");
    runReady();
  }
  const auto sent = count("*Xpc Udp Data was sent to UDP*");
  const auto refused = count(
      "Xpc Udp ERROR! Error when data (Type: Data) sending. NWError: \n "
      "POSIXErrorCode(rawValue: 111): Connection refused");
  EXPECT_GT(sent, 0);
  EXPECT_EQ(sent + refused, 10);
  EXPECT_EQ(count("*Xpc Udp Receive is complete*"), 0);
}

TEST_F(XpcUdpHelperTest, UnconnectedItDropsEverything) {
  helper_->printLogToFile("a");
  helper_->proxyStateWasUpdated("started");
  helper_->sendUDP(data("b"));
  helper_->receiveUDP(nullptr);
  helper_->closeConnection();
  runReady();
  EXPECT_THAT(log_.records(), IsEmpty());
}

TEST_F(XpcUdpHelperTest, AReplacedAssociationLeavesNoSocket) {
  const FakeServer relay(test::stayQuiet);
  for (int i = 0; i < 100; ++i) {
    connect(relay);
  }
  ASSERT_TRUE(runUntilLogged("Xpc Udp State: Ready\n"));
  EXPECT_EQ(NWConnection::openCount(), 1U);
  EXPECT_THAT(log_.records(), Not(Contains("Xpc Udp State: Cancelled\n")));
  EXPECT_EQ(helper_->appToExtDelegate, provider_);
  helper_->connectToUDP(static_cast<std::uint16_t>(relay.port()));
  EXPECT_EQ(helper_->appToExtDelegate, nullptr);
}

TEST_F(XpcUdpHelperTest, ClosedItHoldsNoSocketAndEachLaterSendIsAnErrorLine) {
  const FakeServer relay(test::stayQuiet);
  connect(relay);
  ASSERT_TRUE(runUntilLogged("Xpc Udp State: Ready\n"));
  helper_->proxyStateWasUpdated("stopped");
  helper_->closeConnection();
  ASSERT_TRUE(runUntilLogged("Xpc Udp State: Cancelled\n"));
  EXPECT_EQ(NWConnection::openCount(), 0U);
  EXPECT_EQ(helper_.use_count(), 1);
  EXPECT_THAT(log_.records(), Contains("*Xpc Udp Data was sent to UDP*"));
  helper_->printLogToFile("late");
  ASSERT_TRUE(
      runUntilLogged("Xpc Udp ERROR! Error when data (Type: Data) sending. NWError: \n "
                     "POSIXErrorCode(rawValue: 125): Operation canceled"));
  ASSERT_TRUE(runUntil([&] { return !relay.received().empty(); }));
  EXPECT_THAT(texts(relay), ElementsAre(R"({"cmdType":"notification","payload":"stopped"})"));
}

}  // namespace
}  // namespace quillet
