#include <future>

#include "tests/platform/Test.h"
#include "tests/relay_service/FakeConnection.h"

namespace QuilletXPCservice::test {

using namespace quillet::test;  // NOLINT
using platform::NWError;
using Kind = platform::NWConnection::State::Kind;

class UDPListenerTest : public testing::Test {
 protected:
  /// A client that is received from; the lines of its coming are forgotten.
  std::shared_ptr<FakeConnection> ready() {
    auto connection = std::make_shared<FakeConnection>();
    listener_->acceptConnection(connection);
    connection->report(Kind::ready);
    log_.clear();
    return connection;
  }

  LogCapture log_;
  const std::shared_ptr<Listener> listener_ = std::make_shared<Listener>();
};

TEST_F(UDPListenerTest, ActsOnEachDatagram) {
  const std::pair<std::string, Texts> cases[] = {
      {"&*ALa &*AL line\xff\n%s", {"Agent log: a  line\uFFFD\n%s"}},
      {"&*updateCU&*updateCUbob\xc3",
       {"update CU received, message: &*updateCU&*updateCUbob\uFFFD", " CU updated: bob\uFFFD"}},
      {"&*requestCU and more", {"request CU received, cu: bob\uFFFD", "Data was sent to UDP"}},
      {R"({"cmdType":"printToLog","payload":"a \"line\"\n"})",
       {"got printToLog from Ext: a \"line\"\n"}},
      {R"({"payload":"bypassAllOn","x":[{}],"cmdType":"command"})",
       {"got command from Ext: bypassAllOn"}},
      {R"({"cmdType":"notification","payload":"started"})", {"got notification from Ext: started"}},
      {"&*requestcu", {"Received message is no command, 11 bytes"}}};
  const auto connection = ready();
  for (const auto& [datagram, expected] : cases) {
    log_.clear();
    connection->deliver(datagram);
    EXPECT_EQ(log_.records(), expected);
    EXPECT_EQ(connection->armed(), 1U);
    EXPECT_EQ(textOf(**listener_->messageReceived), datagram);
  }
  EXPECT_EQ(listener_->proxyStatus, "started");
  connection->sendError = NWError::posix(90);
  connection->deliver("&*requestCU");
  EXPECT_EQ(log_.records().back(),
            "ERROR! Error when data (Type: Data) sending. NWError: \n "
            "POSIXErrorCode(rawValue: 90): Message too long");
}

TEST_F(UDPListenerTest, ReplacesAClientByTheNewestAndEndsListeningWhenThatIsCancelled) {
  auto first = ready();
  const std::weak_ptr<FakeConnection> weak = first;
  const auto second = std::make_shared<FakeConnection>();
  listener_->acceptConnection(second);
  EXPECT_EQ(listener_->clientAtFlush, first.get()) << "the flush comes before all else";
  first->deliver("&*ALx");
  EXPECT_THAT(log_.records(), Contains("Agent log: x"));
  EXPECT_THAT(first->done, ElementsAre("start", "receive")) << "and is not cancelled";
  EXPECT_EQ(second->armed(), 1U) << "the loop goes on with the client that is current then";
  first.reset();
  EXPECT_TRUE(weak.expired()) << "let go of";
  second->report(Kind::cancelled);
  EXPECT_FALSE(*listener_->listening);
  Texts seen;
  listener_->messageReceived.observe([&](const auto& data) { seen.emplace_back(textOf(*data)); });
  second->deliver("&*ALlast");
  EXPECT_THAT(seen, ElementsAre("&*ALlast"));
  EXPECT_EQ(second->armed(), 0U) << "no receive any more";
}

TEST_F(UDPListenerTest, EndsTheLoopAtAnErrorOrNoBytesUntilTheNextClient) {
  const std::tuple<std::optional<Data>, bool, std::optional<NWError>> cases[] = {
      {Data{'x'}, true, NWError::posix(5)},
      {Data{}, true, std::nullopt},
      {Data{'x'}, false, std::nullopt},
      {std::nullopt, true, std::nullopt}};
  for (const auto& [content, isComplete, error] : cases) {
    const auto connection = ready();
    connection->complete(content, isComplete, error);
    EXPECT_EQ(*listener_->messageReceived, std::nullopt);
    EXPECT_THAT(log_.records(),
                ElementsAre(error ? "Error: NWError received in receive() - "
                                    "POSIXErrorCode(rawValue: 5): Input/output error"
                                  : "Error: Received nil Data with context - nil"));
    EXPECT_EQ(connection->armed(), 0U);
    EXPECT_EQ(listener_->connection, nullptr) << "let go of, so its client may come again";
    EXPECT_TRUE(*listener_->listening);
    EXPECT_EQ(ready()->armed(), 1U);
  }
}

TEST_F(UDPListenerTest, ClosesThePortForGoodWhenAClientFails) {
  // Runs it, and what has been given to the queue before, and what that has given.
  const auto onQueue = [this](const std::function<void()>& work) {
    for (const auto& each : {work, std::function<void()>([] {})}) {
      std::packaged_task<void()> task(each);
      listener_->queue.async([&] { task(); });
      task.get_future().wait();
    }
  };
  listener_->start(0);
  const auto port = listener_->listener->port().rawValue;
  onQueue([] {});
  EXPECT_TRUE(*listener_->isReady);
  EXPECT_THAT(log_.records(), Contains("Listener connected to port 0"));
  onQueue([&] { ready()->report(Kind::failed); });
  EXPECT_THAT(log_.records(), ElementsAre("Listener failed to receive message - [C1]",
                                          "Listener disconnected from port 0"));
  EXPECT_FALSE(*listener_->isReady);
  EXPECT_FALSE(*listener_->listening);
  const platform::test::UDPSocket successor("127.0.0.1", port);  // the port is free
}

}  // namespace QuilletXPCservice::test
