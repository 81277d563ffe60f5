#include "dns_tools/DNSSocketClient.h"
#include "platform/dispatch/MainLoop.h"
#include "tests/support/FakeFlow.h"
#include "tests/support/FakeServer.h"
#include "tests/support/Test.h"

namespace DnsToolsSocket::test {

using namespace quillet::test;

using platform::NWConnection;
using platform::NWHostEndpoint;

class DNSSocketClientTest : public testing::Test {
 protected:
  /// Sends the texts; what the owner is told becomes a line each, `ANSWER@PORT finished|more
  /// ERROR`.
  void connect(const std::vector<std::string>& texts, std::int64_t port,
               const std::string& ip = "127.0.0.1") {
    std::vector<Data> datagrams;
    std::vector<NWHostEndpoint> endpoints;
    for (const auto& text : texts) {
      endpoints.push_back({"127.0.0.1", std::to_string(endpoints.size())});
      datagrams.emplace_back(text.begin(), text.end());
    }
    auto client = DNSSocketClient::create(flow_, datagrams, endpoints);
    client->onDataReceived = [this](const auto& flow, const auto& answer, const auto& endpoint,
                                    auto isFinished, const auto& error) {
      EXPECT_EQ(flow, flow_);
      told_.push_back((answer ? std::string(textOf(*answer)) : "nothing") + "@" +
                      endpoint.value().port + (isFinished.value() ? " finished " : " more ") +
                      description(error));
    };
    client->connectWithDNS(ip, port);
    client_ = client;
  }
  bool runUntilReleased() {
    return platform::MainLoop::shared().runUntil([this] { return client_.expired(); });
  }

  LogCapture log_;
  std::shared_ptr<FakeFlow> flow_ = std::make_shared<FakeFlow>(5);
  std::weak_ptr<DNSSocketClient> client_;
  std::vector<std::string> told_;
};

TEST_F(DNSSocketClientTest, MatchesAnswersInTheOrderOfArrival) {
  std::vector<Data> kept;
  const FakeServer server([&kept](const Data& received) {
    kept.insert(kept.begin(), received);
    return kept.size() == 3 ? std::exchange(kept, {}) : std::vector<Data>();
  });
  connect({"a", "b", "c"}, server.port());
  ASSERT_TRUE(runUntilReleased());
  EXPECT_THAT(told_, ElementsAre("c@0 more nil", "b@1 more nil", "a@2 finished nil"));
  told_.clear();
  connect({"x", "a", "a"}, server.port());
  ASSERT_TRUE(runUntilReleased());
  EXPECT_THAT(told_, ElementsAre("a@0 more nil", "a@1 more nil", "x@1 finished nil"))
      << "equal datagrams share the first endpoint";
}

TEST_F(DNSSocketClientTest, AnEmptyAnswerIsNoneADatagramTooLargeALineAndTheConnectionStays) {
  const FakeServer server([](const Data& received) {
    return received == Data{'a'} ? std::vector<Data>{Data()} : std::vector<Data>{received};
  });
  connect({std::string(70'000, 'x'), "a", "b"}, server.port());
  ASSERT_TRUE(platform::MainLoop::shared().runUntil([this] { return told_.size() == 2; }));
  EXPECT_THAT(told_, ElementsAre("nothing@1 more nil", "b@2 more nil"));
  EXPECT_THAT(log_.records(),
              Contains("(5): ERROR! Error when data (Type: Data) sending. NWError: \n "
                       "POSIXErrorCode(rawValue: 90): Message too long"));
  const auto connection = client_.lock()->connection();
  EXPECT_EQ(connection->state().kind, NWConnection::State::Kind::ready);
  connection->cancel();
  EXPECT_TRUE(runUntilReleased());
}

TEST_F(DNSSocketClientTest, ConnectsToNoPortOutsideTheRangeAndToNoName) {
  for (const std::int64_t port : {std::int64_t{-1}, std::int64_t{65536}}) {
    connect({"a"}, port);
    EXPECT_TRUE(client_.expired());
    EXPECT_EQ(log_.records().back(),
              "DNSSocketClient, no such port: " + std::to_string(port) + ", flowHash = 5");
  }
  EXPECT_EQ(NWConnection::openCount(), 0U);
  connect({"a"}, 53, "dns.example");
  ASSERT_TRUE(runUntilReleased());
  EXPECT_EQ(log_.records().back(), "State: Waiting,flowHash = 5, error: -65554: NoSuchRecord");
  EXPECT_TRUE(told_.empty());
}

}  // namespace DnsToolsSocket::test
