#include <DeploymentValues.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "platform/network/UDPListenerSocket.h"
#include "relay_service/UDPListener.h"
#include "tests/relay_service/FakeConnection.h"
#include "tests/support/LogCapture.h"

namespace QuilletXPCservice {
namespace {

using platform::NWError;
using quillet::test::LogCapture;
using test::FakeConnection;
using testing::ElementsAre;
using Kind = platform::NWConnection::State::Kind;
using Lines = std::vector<std::string>;

/// The flush is a line of what was done; nothing is run.
class Listener final : public UDPListener {
 public:
  std::string runShellCommand(const std::string& command) override {
    ran.push_back(command);
    return "flushed";
  }

  Lines ran;
};

class UDPListenerTest : public testing::Test {
 protected:
  std::shared_ptr<FakeConnection> accepted(const std::string& name = "[C1]") {
    auto connection = std::make_shared<FakeConnection>(name);
    listener_->acceptConnection(connection);
    return connection;
  }
  /// A client that is received from; the lines of its coming are forgotten.
  std::shared_ptr<FakeConnection> ready(const std::string& name = "[C1]") {
    auto connection = accepted(name);
    connection->report(Kind::ready);
    log_.clear();
    return connection;
  }
  Lines takeLines() {
    auto lines = log_.records();
    log_.clear();
    return lines;
  }

  LogCapture log_;
  const std::shared_ptr<Listener> listener_ = std::make_shared<Listener>();
};

TEST_F(UDPListenerTest, FlushesFirstThenStartsThenReceives) {
  const auto connection = accepted("[C7 ::1.5 udp]");
  EXPECT_THAT(listener_->ran, ElementsAre(quillet::deployment::kFlushCommand));
  EXPECT_THAT(connection->done, ElementsAre("start"));
  connection->report(Kind::setup);
  connection->report(Kind::preparing);
  connection->report(Kind::waiting);
  EXPECT_EQ(connection->armed(), 0U);
  connection->report(Kind::ready);
  EXPECT_EQ(connection->armed(), 1U);
  const std::string waiting = "Listener waiting to receive message - [C7 ::1.5 udp]";
  EXPECT_THAT(log_.records(),
              ElementsAre("clearDNSCacheCmd result - flushed", waiting, waiting, waiting,
                          "Listener ready to receive message - [C7 ::1.5 udp]"));
}

TEST_F(UDPListenerTest, ActsOnEachDatagram) {
  struct Case {
    std::string datagram;
    Lines expected;
  };
  const std::string big(65'000, 'x');
  const Case cases[] = {
      {"&*ALa &*AL line", {"Agent log: a  line"}},
      {"&*AL", {"Agent log: "}},
      {"&*AL\xff\n%s", {"Agent log: \xef\xbf\xbd\n%s"}},
      {"&*requestCU", {"request CU received, cu: ", "Data was sent to UDP"}},
      {"&*updateCU&*updateCUbob",
       {"update CU received, message: &*updateCU&*updateCUbob", " CU updated: bob"}},
      {"&*updateCU\xc3\xa9\xc3",
       {"update CU received, message: &*updateCU\xc3\xa9\xef\xbf\xbd",
        " CU updated: \xc3\xa9\xef\xbf\xbd"}},
      {"&*requestCU and more",
       {"request CU received, cu: \xc3\xa9\xef\xbf\xbd", "Data was sent to UDP"}},
      {"&*updateCU", {"update CU received, message: &*updateCU", " CU updated: "}},
      {R"({"cmdType":"printToLog","payload":"a \"line\"\n"})",
       {"got printToLog from Ext: a \"line\"\n"}},
      {R"({"payload":"bypassAllOn","x":[{}],"cmdType":"command"})",
       {"got command from Ext: bypassAllOn"}},
      {R"({"cmdType":"notification","payload":"started"})", {"got notification from Ext: started"}},
      {R"({"cmdType":"printToLog","payload":")" + big + "\"}", {"got printToLog from Ext: " + big}},
      {"&*A", {"Received message is no command, 3 bytes"}},
      {"&*requestcu", {"Received message is no command, 11 bytes"}},
      {R"({"cmdType":"Command","payload":"x"})", {"Received message is no command, 35 bytes"}},
      {R"({"cmdType":"command"})", {"Received message is no command, 21 bytes"}},
      {R"({"cmdType":"command","payload":1})", {"Received message is no command, 33 bytes"}},
      {std::string("\0\xff", 2), {"Received message is no command, 2 bytes"}},
  };
  const auto connection = ready();
  for (const auto& [datagram, expected] : cases) {
    connection->deliver(datagram);
    EXPECT_EQ(takeLines(), expected) << datagram.substr(0, 80);
    EXPECT_EQ(connection->armed(), 1U);
    EXPECT_EQ(platform::textOf(**listener_->messageReceived), datagram);
  }
  EXPECT_EQ(listener_->proxyStatus, "started");
}

TEST_F(UDPListenerTest, SendsTheUserBack) {
  const auto connection = ready();
  connection->deliver("&*requestCU");
  connection->deliver("&*updateCUalice");
  connection->deliver("&*requestCU");
  connection->sendError = NWError::posix(90);
  log_.clear();
  connection->deliver("&*requestCU");
  EXPECT_THAT(connection->done, ElementsAre("start", "receive", "send ", "receive", "receive",
                                            "send alice", "receive", "send alice", "receive"));
  EXPECT_THAT(log_.records(),
              ElementsAre("request CU received, cu: alice",
                          "ERROR! Error when data (Type: Data) sending. NWError: \n "
                          "POSIXErrorCode(rawValue: 90): Message too long"));
  EXPECT_EQ(listener_->xpcUser, "alice");
}

TEST_F(UDPListenerTest, TheNewestClientReplacesTheOneBefore) {
  auto first = ready("[C1]");
  const std::weak_ptr<FakeConnection> weak = first;
  const auto second = ready("[C2]");
  EXPECT_THAT(first->done, ElementsAre("start", "receive"));  // and is not cancelled
  first.reset();
  EXPECT_TRUE(weak.expired()) << "let go of";
  second->deliver("&*requestCU");
  EXPECT_THAT(second->done, ElementsAre("start", "receive", "send ", "receive"));
  EXPECT_EQ(listener_->ran.size(), 2U);
}

// A completion of the former client's goes on with the one that is current then.
TEST_F(UDPListenerTest, TheLoopGoesOnWithTheCurrentClient) {
  const auto first = ready("[C1]");
  const auto second = accepted("[C2]");
  log_.clear();
  first->deliver("&*ALx");
  EXPECT_THAT(log_.records(), ElementsAre("Agent log: x"));
  EXPECT_EQ(first->armed(), 0U);
  EXPECT_EQ(second->armed(), 1U);
}

TEST_F(UDPListenerTest, AnErrorOrNoBytesEndTheLoopUntilTheNextClient) {
  struct Case {
    std::optional<platform::Data> content;
    bool isComplete;
    std::optional<NWError> error;
    std::string line;
  };
  const std::string none = "Error: Received nil Data with context - nil";
  const Case cases[] = {
      {std::nullopt, false, NWError::posix(111),
       "Error: NWError received in receive() - POSIXErrorCode(rawValue: 111): Connection refused"},
      {platform::Data{'x'}, true, NWError::posix(5),
       "Error: NWError received in receive() - POSIXErrorCode(rawValue: 5): Input/output error"},
      {platform::Data{}, true, std::nullopt, none},
      {platform::Data{'x'}, false, std::nullopt, none},
      {std::nullopt, true, std::nullopt, none},
  };
  for (const auto& [content, isComplete, error, line] : cases) {
    const auto connection = ready();
    const auto before = *listener_->messageReceived;
    connection->complete(content, isComplete, error);
    EXPECT_EQ(*listener_->messageReceived, before);
    EXPECT_THAT(log_.records(), ElementsAre(line));
    EXPECT_EQ(connection->armed(), 0U);
    EXPECT_EQ(listener_->connection, nullptr) << "let go of, so its client may come again";
    EXPECT_TRUE(*listener_->listening);
    const auto next = ready();
    next->deliver("&*ALx");
    EXPECT_EQ(next->armed(), 1U);
  }
}

TEST_F(UDPListenerTest, AClientThatFailsEndsTheListening) {
  for (const auto kind : {Kind::failed, Kind::cancelled}) {
    listener_->listening = true;
    const auto connection = ready();
    connection->report(kind);
    EXPECT_THAT(log_.records(), ElementsAre("Listener failed to receive message - [C1]"));
    EXPECT_FALSE(*listener_->listening);
    connection->deliver("&*ALlast");
    EXPECT_EQ(connection->armed(), 0U) << "no receive any more";
  }
}

TEST_F(UDPListenerTest, AClientThatFailsClosesThePortForGood) {
  const auto onQueue = [this](const std::function<void()>& work) {
    std::promise<void> done;
    listener_->queue.async([&] {
      work();
      done.set_value();
    });
    done.get_future().wait();
  };
  listener_->start(0);
  const auto port = listener_->listener->port().rawValue;
  onQueue([] {});
  onQueue([] {});  // what the first turn gave has run, too
  EXPECT_TRUE(*listener_->isReady);
  EXPECT_THAT(log_.records(), testing::Contains("Listener connected to port 0"));
  onQueue([&] { ready()->report(Kind::failed); });
  onQueue([] {});
  EXPECT_THAT(log_.records(), ElementsAre("Listener failed to receive message - [C1]",
                                          "Listener disconnected from port 0"));
  EXPECT_FALSE(*listener_->isReady);
  EXPECT_FALSE(*listener_->listening);
  EXPECT_TRUE(platform::UDPListenerSocket::bind(port));
}

TEST_F(UDPListenerTest, TellsItsObservers) {
  Lines seen;
  listener_->listening.observe([&](bool value) { seen.emplace_back(value ? "on" : "off"); });
  listener_->messageReceived.observe([&](const std::optional<platform::Data>& value) {
    seen.emplace_back(platform::textOf(value.value()));
  });
  const auto connection = ready();
  connection->deliver("&*AL");
  connection->deliver("&*AL");
  connection->report(Kind::failed);
  EXPECT_THAT(seen, ElementsAre("&*AL", "&*AL", "off"));
}

}  // namespace
}  // namespace QuilletXPCservice
