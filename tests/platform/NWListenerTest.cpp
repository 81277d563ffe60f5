#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/dispatch/MainLoop.h"
#include "platform/foundation/Description.h"
#include "platform/network/AcceptedConnection.h"
#include "platform/network/NWListener.h"
#include "platform/network/SocketAddress.h"
#include "tests/platform/SocketFailures.h"
#include "tests/platform/UDPSocket.h"
#include "tests/support/LogCapture.h"

namespace platform {
namespace {

using quillet::test::LogCapture;
using test::bytes;
using test::UDPSocket;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A listener on the main loop. It starts each new connection at once and receives from it for as
/// long as it is held; all that is said goes into one list of lines.
class NWListenerTest : public testing::Test {
 protected:
  NWListenerTest() {
    listener_->stateUpdateHandler = [this](const NWListener::State& state) {
      lines_.push_back("listener " + std::to_string(static_cast<int>(state.kind)));
    };
    listener_->newConnectionHandler = [this](std::shared_ptr<NWConnection> connection) {
      lines_.emplace_back("new");
      adopt(std::move(connection));
    };
    listener_->start(DispatchQueue::global());
    runReady();
    lines_.clear();
  }
  void TearDown() override {
    held_.clear();
    listener_.reset();
    runReady();
  }

  void adopt(std::shared_ptr<NWConnection> connection) {
    connection->stateUpdateHandler =
        [this, weak = std::weak_ptr(connection)](const NWConnection::State& state) {
          if (state.kind == NWConnection::State::Kind::ready && isReceiving_) {
            receive(weak);
          }
        };
    connection->start(DispatchQueue::global());
    held_.push_back(std::move(connection));
    while (held_.size() > keep_) {
      held_.erase(held_.begin());
    }
  }
  void receive(const std::weak_ptr<NWConnection>& weak) {
    if (const auto connection = weak.lock()) {
      connection->receiveMessage([this, weak](const std::optional<Data>& content, bool isComplete,
                                              const std::optional<NWError>& error) {
        EXPECT_EQ(isComplete, !error);
        lines_.push_back(content ? "got " + std::string(textOf(*content)) : description(*error));
        if (content) {
          receive(weak);
        }
      });
    }
  }

  [[nodiscard]] SocketAddress at(const char* host) const {
    return SocketAddress::parse(host, listener_->port().rawValue).value();
  }
  static void runReady() { MainLoop::shared().runReady(); }
  bool runUntilLines(std::size_t count) {
    return MainLoop::shared().runUntil([&] { return lines_.size() >= count; });
  }

  std::shared_ptr<NWListener> listener_ =
      NWListener::create(NWParameters::udp(), NWEndpoint::Port(0)).value();
  std::vector<std::shared_ptr<NWConnection>> held_;
  std::size_t keep_ = 1;
  bool isReceiving_ = true;
  std::vector<std::string> lines_;
};

TEST_F(NWListenerTest, AnswersFromTheAddressThatWasAsked) {
  for (const char* host : {"127.0.0.1", "127.0.0.2", "::1"}) {
    const UDPSocket client(std::string(host) == "::1" ? "::1" : "127.0.0.1");
    client.connect(at(host));
    for (const auto size : {1UL, 0UL, 1500UL, 65507UL}) {
      lines_.clear();
      const std::string text(size, 'x');
      client.send(text, at(host));
      ASSERT_TRUE(runUntilLines(size == 1 ? 2 : 1)) << host << " " << size;
      EXPECT_TRUE(lines_.back() == "got " + text);
      held_.back()->send(bytes(text), [&](const auto& error) { EXPECT_FALSE(error); });
      runReady();
      EXPECT_TRUE(client.receive().value().text == text);
    }
    EXPECT_EQ(description(*held_.back()).find("[C"), 0U);
  }
}

TEST_F(NWListenerTest, WhatNobodyReceivesWaitsAndItsLossIsALine) {
  const LogCapture log;
  isReceiving_ = false;
  const UDPSocket client;
  for (std::size_t i = 0; i < AcceptedConnection::kMaxHeld + 1; ++i) {
    client.send(std::to_string(i), at("127.0.0.1"));
  }
  ASSERT_TRUE(MainLoop::shared().runUntil([&] { return !log.records().empty(); }));
  EXPECT_THAT(log.records(), ElementsAre(HasSubstr("is not read, dropped 2 bytes")));
  receive(held_.back());
  runReady();
  ASSERT_EQ(lines_.size(), AcceptedConnection::kMaxHeld + 1);
  EXPECT_THAT(lines_[1], "got 0");
  EXPECT_THAT(lines_.back(), "got 15");
}

TEST_F(NWListenerTest, UnreadDatagramsOfWhomItLetsGoAreLines) {
  const LogCapture log;
  isReceiving_ = false;
  const UDPSocket client;
  client.send("one", at("127.0.0.1"));
  ASSERT_TRUE(runUntilLines(1));
  runReady();
  held_.clear();
  EXPECT_THAT(log.records(), ElementsAre(HasSubstr("is let go of, dropped 3 bytes")));
}

TEST_F(NWListenerTest, WhatTheKernelHadNoRoomForIsALine) {
  const LogCapture log;
  const UDPSocket client;
  for (int i = 0; i < 1000; ++i) {  // some 64 MB
    client.send(std::string(65'507, 'x'), at("127.0.0.1"));
  }
  ASSERT_TRUE(MainLoop::shared().runUntil([&] { return !log.records().empty(); }));
  runReady();
  const auto lost = 1000 - (lines_.size() - 1);  // without "new"
  EXPECT_THAT(log.records(), ElementsAre(testing::StartsWith("NWListener: " + std::to_string(lost) +
                                                             " datagrams to port ")));
}

TEST_F(NWListenerTest, HasRoomForABoundedNumberOfClients) {
  const LogCapture log;
  keep_ = 1000;
  std::vector<std::unique_ptr<UDPSocket>> clients;
  for (std::size_t i = 0; i <= NWListener::kMaxConnections; ++i) {
    clients.push_back(std::make_unique<UDPSocket>());
    clients.back()->send("x", at("127.0.0.1"));
  }
  ASSERT_TRUE(MainLoop::shared().runUntil([&] { return !log.records().empty(); }));
  EXPECT_THAT(log.records(), ElementsAre(HasSubstr("no room for [C")));
  EXPECT_EQ(held_.size(), NWListener::kMaxConnections);
  held_.erase(held_.begin());
  clients.back()->send("y", at("127.0.0.1"));
  ASSERT_TRUE(runUntilLines(2 * NWListener::kMaxConnections + 2));
  EXPECT_EQ(lines_.back(), "got y");
}

TEST_F(NWListenerTest, ARefusedAnswerIsTheErrorOfAReceive) {
  for (const char* host : {"127.0.0.1", "::1"}) {
    lines_.clear();
    auto client = std::make_unique<UDPSocket>(host);
    client->send("a", at(host));
    ASSERT_TRUE(runUntilLines(2));
    client.reset();
    held_.back()->send(bytes("answer"), {});
    ASSERT_TRUE(runUntilLines(3));
    EXPECT_EQ(lines_.back(), "POSIXErrorCode(rawValue: 111): Connection refused") << host;
    const UDPSocket other;
    other.send("b", at("127.0.0.1"));
    ASSERT_TRUE(runUntilLines(5));
    EXPECT_EQ(lines_.back(), "got b");
  }
}

TEST_F(NWListenerTest, ASendThatFailsSaysSo) {
  const UDPSocket client;
  client.send("a", at("127.0.0.1"));
  ASSERT_TRUE(runUntilLines(2));
  const std::pair<std::size_t, const char*> cases[] = {
      {65508, "POSIXErrorCode(rawValue: 90): Message too long"}, {3, "nil"}};
  for (const auto& [size, expected] : cases) {
    held_.back()->send(Data(size), [&](const std::optional<NWError>& error) {
      lines_.push_back(error ? description(*error) : "nil");
    });
    ASSERT_NE(lines_.back(), expected);  // later
    runReady();
    EXPECT_EQ(lines_.back(), expected);
  }
  const test::SocketFailures failures({ECONNREFUSED, 0, EPERM});
  for (const char* expected : {"nil", "POSIXErrorCode(rawValue: 1): Operation not permitted"}) {
    held_.back()->send(bytes("x"), [&](const std::optional<NWError>& error) {
      lines_.push_back(error ? description(*error) : "nil");
    });
    runReady();
    EXPECT_EQ(lines_.back(), expected);
  }
}

TEST_F(NWListenerTest, ReportsItsStatesAndClosesThePort) {
  auto second = NWListener::create(NWParameters::udp(), NWEndpoint::Port(0)).value();
  second->stateUpdateHandler = [this](const NWListener::State& state) {
    lines_.push_back("second " + std::to_string(static_cast<int>(state.kind)));
  };
  const auto port = second->port();
  second->start(DispatchQueue::global());
  EXPECT_THAT(lines_, IsEmpty());
  runReady();
  EXPECT_FALSE(NWListener::create(NWParameters::udp(), port).has_value());
  second->cancel();
  second->cancel();
  runReady();
  EXPECT_THAT(lines_, ElementsAre("second 0", "second 2", "second 4"));
  EXPECT_TRUE(NWListener::create(NWParameters::udp(), port).has_value());
}

}  // namespace
}  // namespace platform
