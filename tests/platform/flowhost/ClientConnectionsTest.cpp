#include <cerrno>
#include <deque>

#include "platform/base/Clock.h"
#include "platform/flowhost/ClientConnections.h"
#include "platform/udp/OwnSockets.h"
#include "tests/platform/HostedTest.h"
#include "tests/platform/SocketFailures.h"
#include "tests/platform/TCPClient.h"

namespace platform {
namespace {

using namespace std::string_literals;

using test::framed;
using test::SocketFailures;
using test::TCPClient;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr auto kMaxOutstanding = ClientConnection::kMaxOutstanding;

class ClientConnectionsTest : public test::HostedTest {
 protected:
  ClientConnectionsTest() { Clock::setShared(&clock_); }
  ~ClientConnectionsTest() override { Clock::setShared(nullptr); }

  /// Whether the client is answered; what it costs everybody else is that it is not.
  void expectService() {
    TCPClient client(bound());
    client.query("good");
    const auto index = provider_.offers.size();
    EXPECT_THAT(read(offered(index)), ElementsAre("good to " + description(endpoint())));
    EXPECT_EQ(answer(index, "answer"), "");
    EXPECT_EQ(client.received(), framed("answer"));
    EXPECT_FALSE(client.isClosed());
  }
  void pass(double seconds) {
    clock_.advanceSeconds(seconds);
    runReady();
  }
  /// What becomes of a flow that the provider has answered.
  void close(std::size_t offer) const {
    provider_.offers.at(offer).flow->closeReadWithError(std::nullopt);
    provider_.offers.at(offer).flow->closeWriteWithError(std::nullopt);
  }

  ManualClock clock_;
};

TEST_F(ClientConnectionsTest, EachQueryIsAFlowWhoseAnswerGoesBackWhereItCameFrom) {
  start({"0.0.0.0", "::1"});
  const SocketAddress asked[] = {bound(0, "127.0.0.7"), bound(0, "127.0.0.1"), bound(1)};
  std::deque<TCPClient> clients;
  for (const auto& address : asked) {
    auto& client = clients.emplace_back(address);
    client.send(framed("first") + framed("second").substr(0, 3));
    offered(provider_.offers.size());
    client.send(framed("second").substr(3));
    offered(provider_.offers.size());
  }
  for (std::size_t i = 0; i < 6; ++i) {
    const auto to = " to " + description(asked[i / 2]);
    const auto& [flow, endpoint] = provider_.offers.at(i);
    EXPECT_THAT(read(flow), ElementsAre((i % 2 == 0 ? "first" : "second") + to));
    EXPECT_EQ(" to " + description(endpoint), to);
    EXPECT_EQ(description(flow->localEndpoint()),
              "Optional(" + description(clients[i / 2].address()) + ")");
  }
  for (const auto i : {3U, 4U, 1U, 2U, 0U, 5U}) {
    EXPECT_EQ(answer(i, "answer " + std::to_string(i)), "");
  }
  EXPECT_EQ(clients[0].received(), framed("answer 1") + framed("answer 0"));
  EXPECT_EQ(clients[1].received(), framed("answer 3") + framed("answer 2"));
  EXPECT_EQ(clients[2].received(), framed("answer 4") + framed("answer 5"));
}

TEST_F(ClientConnectionsTest, SoManyQueriesAreOutstandingAndTheOthersWait) {
  start({"127.0.0.1"});
  TCPClient client(bound());
  for (std::size_t i = 0; i < kMaxOutstanding + 3; ++i) {
    client.query(std::to_string(i));
  }
  client.endSending();
  runReady();
  ASSERT_THAT(provider_.offers, SizeIs(kMaxOutstanding));
  EXPECT_EQ(answer(0, "a"), "");  // is over with the answer, with its flow, with nobody who has it
  EXPECT_THAT(read(offered(kMaxOutstanding)), ElementsAre(testing::StartsWith("128 ")));
  close(1);
  offered(kMaxOutstanding + 1);
  provider_.offers[2].flow.reset();
  offered(kMaxOutstanding + 2);
  expectService();
  for (std::size_t i = 3; i < kMaxOutstanding + 3; ++i) {
    EXPECT_FALSE(client.isClosed()) << "waits for answer " << i;
    EXPECT_EQ(answer(i, "a"), "");
  }
  runReady();
  EXPECT_EQ(client.received().size(), framed("a").size() * (kMaxOutstanding + 1));
  EXPECT_TRUE(client.isClosed());
}

TEST_F(ClientConnectionsTest, ASlowReaderIsClosedWhenTooMuchWaits) {
  start({"127.0.0.1"});
  TCPClient slow(bound());
  TCPClient slower(bound());
  for (const auto* client : {&slow, &slower}) {
    for (std::size_t i = 0; i < kMaxOutstanding; ++i) {
      client->query("q");
    }
  }
  offered(2 * kMaxOutstanding - 1);
  std::size_t octets = 0;
  const auto answerAll = [&](std::size_t from, std::size_t count) {
    std::size_t failed = 0;
    for (std::size_t i = from; i < from + count; ++i) {
      const std::string text(MessageFraming::kMaxMessage, static_cast<char>('a' + i % 26));
      const auto& [flow, asked] = provider_.offers.at(i);
      flow->writeDatagrams({test::bytes(text)}, {asked},
                           [&failed](const auto& error) { failed += error ? 1U : 0U; });
      octets += framed(text).size();
    }
    runReady();
    return failed;
  };
  const SocketFailures failures({0, 0, EAGAIN});  // then no room, then room again
  EXPECT_EQ(answerAll(0, 8), 0U);
  EXPECT_EQ(slow.received().size(), octets);
  for (std::size_t i = 0; i < 8; ++i) {
    EXPECT_EQ(slow.received()[i * (2 + MessageFraming::kMaxMessage) + 2],
              static_cast<char>('a' + i));
  }
  EXPECT_GT(answerAll(kMaxOutstanding, kMaxOutstanding), 0U);
  EXPECT_TRUE(slower.isClosed());
  EXPECT_LT(slower.received().size(), octets);
  EXPECT_EQ(answer(2 * kMaxOutstanding - 1, "late"), "the flow is closed");
  EXPECT_FALSE(slow.isClosed());
  expectService();
}

TEST_F(ClientConnectionsTest, WhoSendsNoWholeQueryIsClosedUnlessItWaitsForAnAnswer) {
  start({"127.0.0.1"});
  const std::string pieces[] = {"", "\0"s, framed("half a query").substr(0, 9)};
  std::deque<TCPClient> idle;
  for (const auto& piece : pieces) {
    idle.emplace_back(bound()).send(piece);
  }
  TCPClient waiting(bound());
  waiting.query("slow");
  offered(0);
  pass(9);
  idle[2].send("y");
  expectService();
  pass(0.9);
  for (auto& client : idle) {
    EXPECT_FALSE(client.isClosed());
  }
  pass(0.2);
  for (auto& client : idle) {
    EXPECT_TRUE(client.isClosed());
  }
  pass(100);
  EXPECT_EQ(answer(0, "at last"), "");
  close(0);
  pass(9.9);
  EXPECT_FALSE(waiting.isClosed());
  pass(0.2);
  EXPECT_TRUE(waiting.isClosed());
  EXPECT_EQ(waiting.received(), framed("at last"));
}

TEST_F(ClientConnectionsTest, AnAnswerThatNeverComesHoldsNoConnectionForEver) {
  start({"127.0.0.1"});
  TCPClient half(bound());
  half.query("q");
  half.endSending();
  TCPClient whole(bound());
  for (std::size_t i = 0; i < kMaxOutstanding + 2; ++i) {
    whole.query("q");
  }
  offered(kMaxOutstanding);
  pass(119);
  EXPECT_FALSE(half.isClosed());
  EXPECT_THAT(provider_.offers, SizeIs(1 + kMaxOutstanding));
  pass(1);
  EXPECT_TRUE(half.isClosed());
  EXPECT_EQ(answer(0, "late"), "the flow is closed");
  EXPECT_THAT(provider_.offers, SizeIs(3 + kMaxOutstanding));
  EXPECT_EQ(answer(1, "late"), "");
  EXPECT_EQ(whole.received(), framed("late"));
  pass(119);
  EXPECT_FALSE(whole.isClosed());
  pass(1);
  pass(10);
  EXPECT_TRUE(whole.isClosed());
}

TEST_F(ClientConnectionsTest, OneConnectionMoreClosesTheIdlest) {
  start({"127.0.0.1"});
  std::deque<TCPClient> clients;
  for (std::size_t i = 0; i < ClientConnections::kMaxConnections; ++i) {
    clients.emplace_back(bound());
    pass(0.01);
  }
  clients[0].query("q");
  offered(0);
  expectService();
  EXPECT_FALSE(clients[0].isClosed());
  EXPECT_TRUE(clients[1].isClosed());
  EXPECT_FALSE(clients[2].isClosed());
  EXPECT_EQ(answer(0, "a"), "");
}

TEST_F(ClientConnectionsTest, WhatIsNoQueryEndsItsOwnConnectionOnly) {
  start({"127.0.0.1"});
  TCPClient good(bound());
  good.query("good");
  TCPClient empty(bound());
  empty.send(framed("q") + framed("") + framed("not read"));
  offered(1);
  runReady();
  EXPECT_TRUE(empty.isClosed());
  ASSERT_THAT(provider_.offers, SizeIs(2));
  { const TCPClient gone(bound()); }
  TCPClient cut(bound());
  cut.send("\0\7x"s);
  cut.endSending();
  runReady();
  EXPECT_TRUE(cut.isClosed());
  EXPECT_EQ(answer(0, "a"), "");
  EXPECT_EQ(good.received(), framed("a"));
}

TEST_F(ClientConnectionsTest, OurOwnConnectionIsDroppedWithALine) {
  start({"127.0.0.1"});
  const auto address = bound(0, "127.0.0.5");
  const OwnSockets::Entry udp(address, OwnSockets::Use::exchange);  // another socket than a TCP one
  EXPECT_FALSE(OwnSockets::tcp().hasSent(address));
  const auto stream = std::make_shared<MessageStream>();
  struct Nobody final : MessageStream::Owner {
    void streamChanged() override {}
  };
  const auto owner = std::make_shared<Nobody>();
  EXPECT_EQ(stream->connect(bound(), owner), std::error_code());
  stream->setReading(true);
  EXPECT_TRUE(runUntil([&] { return stream->hasEnded(); }));
  EXPECT_THAT(log_.records(),
              ElementsAre(testing::StartsWith(
                  "FlowHost: dropped a connection from our own socket 127.0.0.1:")));
  EXPECT_THAT(provider_.offers, IsEmpty());
  expectService();
}

TEST_F(ClientConnectionsTest, ASystemWithoutRoomIsLeftAloneForASecond) {
  start({"127.0.0.1"});
  {
    const SocketFailures failures({ECONNABORTED, EMFILE, EMFILE});
    TCPClient client(bound());
    client.query("q");
    runReady();
    pass(1);
    EXPECT_THAT(provider_.offers, IsEmpty());
    pass(1);
    EXPECT_THAT(provider_.offers, SizeIs(1));
  }
  EXPECT_THAT(log_.records(), ElementsAre("FlowHost: cannot accept on " + description(endpoint()) +
                                          ": POSIXErrorCode(rawValue: 24): Too many open files"));
  expectService();
}

TEST_F(ClientConnectionsTest, StopClosesListenersAndConnections) {
  start({"127.0.0.1", "127.0.0.2"});
  const auto address = bound();
  TCPClient client(address);
  client.query("q");
  offered(0);
  host_->stop();
  EXPECT_TRUE(client.isClosed());
  EXPECT_EQ(answer(0, "late"), "the flow is closed");
  EXPECT_THROW(TCPClient{address}, std::runtime_error);
}

}  // namespace
}  // namespace platform
