#include "DnsProxyExt/relay/XpcUdpHelper.h"
#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet::test {

using platform::NWConnection;

constexpr char kBypassOn[] = R"({"cmdType":"command","payload":"bypassAllOn"})";
constexpr char kSent[] = "*Xpc Udp Data was sent to UDP*";
constexpr char kCancelled[] = "Xpc Udp State: Cancelled\n";

Data data(std::string_view text) { return {text.begin(), text.end()}; }

/// A link of its own, whose commands go to the provider.
class XpcUdpHelperTest : public ProviderTest {
 protected:
  XpcUdpHelperTest() {
    provider_->xpcUdpHelper->closeConnection();
    runReady();
    log_.clear();
  }
  ~XpcUdpHelperTest() override { helper_->closeConnection(); }

  void connect(const FakeServer& server, const char* request = "q") {
    helper_->connectToUDP(
        provider_, static_cast<std::uint16_t>(server.port()), request,
        [this](std::optional<std::string> reply, const std::optional<platform::Error>& error) {
          EXPECT_EQ(error, std::nullopt);
          replies_.push_back(std::move(reply).value());
        });
  }

  std::shared_ptr<XpcUdpHelper> helper_ = std::make_shared<XpcUdpHelper>();
  Texts replies_;
};

TEST_F(XpcUdpHelperTest, SendsFromTheMomentItConnects) {
  const FakeServer relay(stayQuiet);
  connect(relay, "&*requestCU");
  helper_->printLogToFile("a \"line\"\n");
  ASSERT_TRUE(runUntil([&] { return relay.received().size() == 2; }));
  EXPECT_THAT(relay.received(), testing::UnorderedElementsAre(
                                    data("&*requestCU"),
                                    data(R"({"cmdType":"printToLog","payload":"a \"line\"\n"})")));
  runReady();
  EXPECT_THAT(log_.records(), ElementsAre("Xpc Udp State: Setup\n", "Xpc Udp State: Preparing\n",
                                          "Xpc Udp State: Ready\n", kSent, kSent));
}

TEST_F(XpcUdpHelperTest, TakesOneDatagramAndObeysCommandsOnly) {
  const std::pair<const char*, const char*> rows[] = {
      {R"({"cmdType":"printToLog","payload":"bypassAllOn"})", "default"},
      {R"({"cmdType":"notification","payload":"bypassAllOn"})", "default"},
      {"\xFF\xFF", "Xpc Udp Received message is no command, 2 bytes"},
      {"", "Xpc Udp Data == nil"},
      {"&*\xFF{}", "*Xpc Udp Received message: &*\uFFFD{}"},
      {R"({"cmdType":"command","payload":"BypassAllOn"})", "unknown XpcUdp command"},
      {kBypassOn, "Received command: bypassAllOn"}};
  for (const auto& [datagram, record] : rows) {
    EXPECT_FALSE(provider_->bypassAll);
    log_.clear();
    const FakeServer relay([text = datagram](const Data& /*received*/) {
      return std::vector<Data>{data(text), data(kBypassOn)};
    });
    connect(relay);
    ASSERT_TRUE(runUntilLogged(record)) << datagram;
    if (*datagram == '\0') {
      helper_->closeConnection();  // nothing has ended it
    }
    EXPECT_TRUE(runUntilLogged(kCancelled)) << datagram;
    EXPECT_EQ(count("Xpc Udp Received message is no command, 5 bytes"), 0);
  }
  EXPECT_TRUE(provider_->bypassAll);
  EXPECT_THAT(replies_, Contains("&*\uFFFD{}"));
  EXPECT_EQ(count("*Xpc Udp Receive is complete*"), 1);
  helper_->printLogToFile("later");
  EXPECT_TRUE(
      runUntilLogged("Xpc Udp ERROR! Error when data (Type: Data) sending. NWError: \n "
                     "POSIXErrorCode(rawValue: 125): Operation canceled"));
}

TEST_F(XpcUdpHelperTest, AReplacedAssociationLeavesNoSocket) {
  const FakeServer relay(stayQuiet);
  connect(relay);
  const std::weak_ptr<NWConnection> replaced = helper_->connection;
  EXPECT_EQ(helper_->appToExtDelegate, provider_);
  helper_->connectToUDP(static_cast<std::uint16_t>(relay.port()));
  EXPECT_EQ(helper_->appToExtDelegate, nullptr);
  ASSERT_TRUE(runUntilLogged("Xpc Udp State: Ready\n"));
  EXPECT_TRUE(replaced.expired());
  EXPECT_EQ(count(kCancelled), 0) << "it goes without a word";
}

}  // namespace quillet::test
