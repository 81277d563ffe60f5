#include "platform/network/AcceptedConnection.h"
#include "platform/network/NWListener.h"
#include "tests/platform/SocketFailures.h"
#include "tests/platform/Test.h"

namespace platform::test {

/// A listener whose connections start at once and are received from for as long as they are held.
class NWListenerTest : public testing::Test {
 protected:
  NWListenerTest() {
    listener_->newConnectionHandler = [this](const auto& connection) {
      lines_.emplace_back("new");
      connection->stateUpdateHandler = [this, weak = std::weak_ptr(connection)](const auto& state) {
        if (state.kind == NWConnection::State::Kind::ready && isReceiving_) {
          receive(weak.lock());
        }
      };
      connection->start(DispatchQueue::global());
      held_.push_back(connection);
      if (held_.size() > keep_) {
        held_.erase(held_.begin());
      }
    };
    listener_->start(DispatchQueue::global());
    runReady();
  }
  ~NWListenerTest() override {
    held_.clear();
    listener_.reset();
    runReady();
  }

  void receive(const std::shared_ptr<NWConnection>& from) {
    from->receiveMessage(
        [this, weak = std::weak_ptr(from)](auto content, bool isComplete, auto error) {
          EXPECT_EQ(isComplete, !error);
          lines_.push_back(content ? "got " + std::string(textOf(*content)) : description(*error));
          if (const auto connection = weak.lock(); connection && content) {
            receive(connection);
          }
        });
  }
  /// How it ends that the newest connection answers.
  std::string answer() {
    std::string outcome;
    held_.back()->send({},
                       [&](const auto& error) { outcome = error ? description(*error) : "sent"; });
    EXPECT_EQ(outcome, "") << "later";
    runReady();
    return outcome;
  }

  [[nodiscard]] SocketAddress at(const char* host) const {
    return address(host, listener_->port().rawValue);
  }

  const LogCapture log_;
  std::shared_ptr<NWListener> listener_ =
      NWListener::create(NWParameters::udp(), NWEndpoint::Port(0)).value();
  std::vector<std::shared_ptr<NWConnection>> held_;
  std::size_t keep_ = 1;
  bool isReceiving_ = true;
  Texts lines_;
};

TEST_F(NWListenerTest, WhatNobodyReceivesWaitsAndItsLossIsALine) {
  isReceiving_ = false;
  const UDPSocket client;
  for (std::size_t i = 0; i < AcceptedConnection::kMaxHeld + 1; ++i) {
    client.send(std::to_string(i), at("127.0.0.1"));
  }
  ASSERT_TRUE(runUntilSize(log_.records(), 1));
  EXPECT_THAT(log_.records(), ElementsAre(HasSubstr("is not read, dropped 2 bytes")));
  receive(held_.back());
  runReady();
  ASSERT_EQ(lines_.size(), 1 + AcceptedConnection::kMaxHeld);
  EXPECT_THAT(lines_[1], "got 0");
  EXPECT_THAT(lines_.back(), "got 15");
  UDPSocket().send("one", at("127.0.0.1"));
  ASSERT_TRUE(runUntilSize(lines_, 2 + AcceptedConnection::kMaxHeld));
  runReady();
  held_.clear();
  EXPECT_THAT(log_.records().back(), HasSubstr("is let go of, dropped 3 bytes"));
}

TEST_F(NWListenerTest, WhatTheKernelHadNoRoomForIsALine) {
  const UDPSocket client;
  for (int i = 0; i < 100; ++i) {  // some 6 MB
    client.send(std::string(65'507, 'x'), at("127.0.0.1"));
  }
  ASSERT_TRUE(runUntilSize(log_.records(), 1));
  runReady();
  const auto lost = std::to_string(100 - (lines_.size() - 1));  // without "new"
  EXPECT_THAT(log_.records(),
              ElementsAre(testing::StartsWith("NWListener: " + lost + " datagrams to port ")));
}

TEST_F(NWListenerTest, HasRoomForABoundedNumberOfClients) {
  keep_ = 1000;
  std::vector<UDPSocket> clients(NWListener::kMaxConnections + 1);
  for (const auto& client : clients) {
    client.send("x", at("127.0.0.1"));
  }
  ASSERT_TRUE(runUntilSize(log_.records(), 1));
  EXPECT_THAT(log_.records(), ElementsAre(HasSubstr("no room for [C")));
  EXPECT_EQ(held_.size(), NWListener::kMaxConnections);
  held_.erase(held_.begin());
  clients.back().send("y", at("127.0.0.1"));
  ASSERT_TRUE(runUntilSize(lines_, 2 * NWListener::kMaxConnections + 2));
  EXPECT_EQ(lines_.back(), "got y");
}

TEST_F(NWListenerTest, DropsWhatOurOwnSocketsSendAndARefusedAnswerIsTheErrorOfAReceiveOnly) {
  const UDPSocket own;
  const OwnSockets::Entry exchange(own.address(), OwnSockets::Use::exchange);
  own.send("one", at("127.0.0.1"));
  UDPSocket client("::1");
  client.send("a", at("::1"));
  ASSERT_TRUE(runUntilSize(lines_, 2));
  EXPECT_THAT(log_.records(), ElementsAre("NWListener: dropped 3 bytes from our own socket " +
                                          description(own.address())));
  const auto port = client.port();
  client.close();
  EXPECT_EQ(answer(), "sent");
  ASSERT_TRUE(runUntilSize(lines_, 3));
  EXPECT_THAT(lines_,
              ElementsAre("new", "got a", "POSIXErrorCode(rawValue: 111): Connection refused"));
  const UDPSocket successor("::1", port);  // nothing arrives at the listener meanwhile
  const SocketFailures failures(
      {ECONNREFUSED, EINTR, 0, ENETUNREACH, 0, EPROTO, 0, EMSGSIZE, 0, EPERM, EPERM});
  for (int earlier = 0; earlier < 4; ++earlier) {
    EXPECT_EQ(answer(), "sent");
  }
  EXPECT_EQ(answer(), "POSIXErrorCode(rawValue: 1): Operation not permitted");
}

}  // namespace platform::test
