#include "DnsProxyExt/upstream/PolicyUDPClient.h"
#include "tests/DnsProxyExt/ProviderTest.h"
#include "tests/support/ExpectedText.h"

namespace quillet::test {

class PolicyUDPClientTest : public ProviderTest {
 protected:
  PolicyUDPClientTest() { log_.clear(); }

  void connect(const std::string& ip, std::int64_t port, Data request = {'q', 'q'}) {
    auto client = std::make_shared<PolicyUDPClient>(std::move(request));
    client->onPolicyDataReceived = [this](const std::optional<Data>& content,
                                          std::optional<bool> isComplete,
                                          const std::optional<platform::NWError>& error) {
      told_.push_back((content ? std::string(textOf(*content)) : "nothing") +
                      (isComplete.value() ? " complete " : " open ") + description(error));
    };
    client->connectWithUDP(ip, port);
    client_ = client;
  }
  bool runUntilGone() {
    return runUntil([this] { return client_.expired(); });
  }

  std::weak_ptr<PolicyUDPClient> client_;
  Texts told_;
};

TEST_F(PolicyUDPClientTest, LogsEveryStepOfOneExchange) {
  const FakeServer server([](const Data& /*received*/) { return std::vector<Data>{{'a'}, {'b'}}; });
  connect("127.0.0.1", server.port());
  ASSERT_TRUE(runUntilGone());
  EXPECT_THAT(server.received(), ElementsAre(Data{'q', 'q'}));
  EXPECT_THAT(told_, ElementsAre("a complete nil")) << "a second datagram is not read";
  const auto port = std::to_string(server.port());
  auto text = linesOf(log_.records());
  for (auto at = text.find(port); at != std::string::npos; at = text.find(port)) {
    text.replace(at, port.size(), "PORT");
  }
  EXPECT_EQ(text, expectedText("DnsProxyExt/transcripts/policy-exchange.txt"));
}

TEST_F(PolicyUDPClientTest, EveryExchangeWithoutAnAnswerEnds) {
  for (const std::int64_t port : {std::int64_t{-1}, std::int64_t{65536}}) {
    connect("127.0.0.1", port);
    EXPECT_TRUE(client_.expired());
    EXPECT_EQ(log_.records().back(), "PolicyUDPClient: no such port: " + std::to_string(port));
  }
  connect("policy.example", 2800);
  ASSERT_TRUE(runUntilGone());
  EXPECT_EQ(log_.records().back(),
            "PolicyUDPClient - State: Waiting,policy.example:2800 error: -65554: NoSuchRecord");
  const FakeServer empty([](const Data& /*received*/) { return std::vector<Data>{Data()}; });
  connect("127.0.0.1", empty.port(), Data(70'000));
  ASSERT_TRUE(runUntilGone());
  EXPECT_THAT(log_.records().back(),
              testing::MatchesRegex("PolicyUDPClient  ERROR! Error when data \\(Type: Data\\) "
                                    "sending to  UDP\\.Optional\\(.*\\), to ip - 127.0.0.1, port "
                                    "- [0-9]+ NWError: \n .*Message too long"));
  EXPECT_THAT(told_, IsEmpty());
  connect("127.0.0.1", empty.port());
  ASSERT_TRUE(runUntilGone());
  EXPECT_THAT(log_.records().back(),
              StartsWith("PolicyUDPClient dns session is not completed,Optional("));
  connect("127.0.0.1", platform::test::unusedPort());
  ASSERT_TRUE(runUntilGone());
  const std::string refused = "Optional(POSIXErrorCode(rawValue: 111): Connection refused)";
  EXPECT_THAT(log_.records(),
              Contains(StartsWith("PolicyUDPClient udp socket error: " + refused + ",Optional(")));
  EXPECT_THAT(told_, ElementsAre("nothing open nil", "nothing open " + refused));
}

}  // namespace quillet::test
