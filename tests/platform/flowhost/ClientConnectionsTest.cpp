#include "platform/flowhost/ClientConnections.h"
#include "tests/platform/HostedTest.h"

namespace platform::test {

constexpr auto kMaxOutstanding = ClientConnection::kMaxOutstanding;

class ClientConnectionsTest : public HostedTest {
 protected:
  ClientConnectionsTest() { start({"127.0.0.1", "::1", "0.0.0.0"}); }

  /// Whether the client is answered; what it costs everybody else is that it is not.
  void expectService() {
    TCPClient client(bound());
    client.query("good");
    const auto index = provider_.flows.size();
    EXPECT_THAT(read(offered(index)), ElementsAre("good to " + description(endpoint())));
    EXPECT_EQ(answer(index, "answer"), "");
    EXPECT_EQ(client.received(), framed("answer"));
    EXPECT_FALSE(client.isClosed());
  }

  SharedClock clock_;
};

TEST_F(ClientConnectionsTest, EachQueryIsAFlowWhoseAnswerGoesBackWhereItCameFrom) {
  for (const auto& asked : {bound(1), bound(2, "127.0.0.7")}) {
    const auto first = provider_.flows.size();
    TCPClient client(asked);
    client.send(framed("first") + framed("second").substr(0, 3));
    EXPECT_THAT(read(offered(first)), ElementsAre("first to " + description(asked)));
    client.send(framed("second").substr(3));
    EXPECT_THAT(read(offered(first + 1)), ElementsAre("second to " + description(asked)));
    EXPECT_EQ(description(provider_.destinations.back()), description(asked));
    EXPECT_EQ(description(*provider_.flows.back()->localEndpoint()), description(client.address()));
    EXPECT_EQ(answer(first + 1, "two"), "");
    EXPECT_EQ(answer(first, "one"), "");
    EXPECT_EQ(client.received(), framed("two") + framed("one"));
  }
}

TEST_F(ClientConnectionsTest, SoManyQueriesAreOutstandingAndTheOthersWait) {
  TCPClient client(bound());
  for (std::size_t i = 0; i < kMaxOutstanding + 3; ++i) {
    client.query(std::to_string(i));
  }
  client.endSending();
  runReady();
  ASSERT_THAT(provider_.flows, SizeIs(kMaxOutstanding));
  EXPECT_EQ(answer(0, "a"), "");  // is over with the answer, with its flow, with nobody who has it
  EXPECT_THAT(read(offered(kMaxOutstanding)), ElementsAre(testing::StartsWith("128 ")));
  provider_.flows[1]->closeReadWithError(std::nullopt);
  provider_.flows[1]->closeWriteWithError(std::nullopt);
  offered(kMaxOutstanding + 1);
  provider_.flows[2].reset();
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

TEST_F(ClientConnectionsTest, WhenAllTogetherHaveManyOutstandingEachHasOneAtATime) {
  constexpr auto kMany = ClientConnections::kMaxConnections * ClientConnections::kOutstandingShare;
  std::deque<TCPClient> clients;
  static_assert(kMany % kMaxOutstanding == 0);
  while (clients.size() < kMany / kMaxOutstanding) {
    clients.emplace_back(bound()).query("q", kMaxOutstanding);
  }
  offered(kMany - 1);
  TCPClient late(bound());
  late.send(framed("first") + framed("second"));
  offered(kMany);
  runReady();
  ASSERT_THAT(provider_.flows, SizeIs(kMany + 1));
  EXPECT_EQ(answer(kMany, "a"), "");
  EXPECT_THAT(read(offered(kMany + 1)), ElementsAre(testing::StartsWith("second ")));
}

TEST_F(ClientConnectionsTest, ASlowReaderIsClosedWhenTooMuchWaits) {
  TCPClient client(bound());
  client.query("q", kMaxOutstanding);
  offered(kMaxOutstanding - 1);
  const std::string large(MessageFraming::kMaxMessage, 'x');
  {
    const SocketFailures failures({EAGAIN});  // and there is room again
    EXPECT_EQ(answer(0, large) + answer(1, large), "");
  }
  EXPECT_EQ(client.received(), framed(large) + framed(large));
  std::size_t failed = 0;
  for (std::size_t i = 2; i < kMaxOutstanding; ++i) {
    provider_.flows[i]->writeDatagrams({bytes(large)}, {provider_.destinations[i]},
                                       [&failed](const auto& error) { failed += error ? 1U : 0U; });
  }
  runReady();
  EXPECT_GT(failed, ClientConnection::kMaxWaiting / large.size());
  EXPECT_TRUE(client.isClosed());
  EXPECT_EQ(answer(kMaxOutstanding - 1, "late"), "the flow is closed");
  expectService();
}

TEST_F(ClientConnectionsTest, WhoSendsNoWholeQueryIsClosedUnlessItWaitsForAnAnswer) {
  std::deque<TCPClient> idle;
  for (const auto& piece : {""s, "\0"s, "\0\7que"s}) {
    idle.emplace_back(bound()).send(piece);
  }
  TCPClient waiting(bound());
  waiting.query("slow");
  offered(0);
  clock_.pass(9.9);
  idle[2].send("r");
  expectService();
  EXPECT_FALSE(idle[0].isClosed());
  clock_.pass(0.1);
  EXPECT_TRUE(idle[0].isClosed() && idle[1].isClosed() && idle[2].isClosed());
  clock_.pass(100);
  EXPECT_EQ(answer(0, "at last"), "");
  clock_.pass(9.9);
  EXPECT_FALSE(waiting.isClosed());
  clock_.pass(0.1);
  EXPECT_TRUE(waiting.isClosed());
  EXPECT_EQ(waiting.received(), framed("at last"));
}

TEST_F(ClientConnectionsTest, AnAnswerThatNeverComesIsWaitedForSoLong) {
  TCPClient half(bound());
  half.query("q");
  half.endSending();
  TCPClient whole(bound());
  whole.query("q", kMaxOutstanding + 1);
  offered(kMaxOutstanding);
  clock_.pass(119);
  EXPECT_FALSE(half.isClosed());
  EXPECT_THAT(provider_.flows, SizeIs(1 + kMaxOutstanding));
  clock_.pass(1);
  EXPECT_TRUE(half.isClosed());
  EXPECT_THAT(provider_.flows, SizeIs(2 + kMaxOutstanding));
  EXPECT_EQ(answer(1, "late"), "");
  EXPECT_EQ(whole.received(), framed("late"));
}

TEST_F(ClientConnectionsTest, OneConnectionMoreClosesTheIdlest) {
  std::deque<TCPClient> clients;
  for (std::size_t i = 0; i < ClientConnections::kMaxConnections; ++i) {
    clients.emplace_back(bound());
    clock_.pass(0.01);
  }
  clients[0].query("q");
  offered(0);
  expectService();
  EXPECT_FALSE(clients[0].isClosed() || clients[2].isClosed());
  EXPECT_TRUE(clients[1].isClosed());
}

TEST_F(ClientConnectionsTest, WhatIsNoQueryOrFromOurselvesEndsItsOwnConnectionOnly) {
  TCPClient own(bound());
  const OwnSockets::Entry entry(own.address(), OwnSockets::Use::exchange, OwnSockets::tcp());
  TCPClient(bound()).close();
  TCPClient empty(bound());
  empty.send(framed("q") + framed("") + framed("not read"));
  TCPClient cut(bound());
  cut.send("\0\7x"s);
  cut.endSending();
  const OwnSockets::Entry byUDP(empty.address(), OwnSockets::Use::exchange);  // another socket
  offered(0);
  runReady();
  EXPECT_TRUE(own.isClosed() && empty.isClosed() && cut.isClosed());
  EXPECT_THAT(log_.records(), ElementsAre("FlowHost: dropped a connection from our own socket " +
                                          description(own.address())));
  EXPECT_THAT(provider_.flows, SizeIs(1));
  expectService();
}

TEST_F(ClientConnectionsTest, ASystemWithoutRoomIsLeftAloneForASecond) {
  {
    const SocketFailures failures({ECONNABORTED, EMFILE, EMFILE});
    TCPClient client(bound());
    client.query("q");
    runReady();
    clock_.pass(1);
    EXPECT_THAT(provider_.flows, IsEmpty());
    clock_.pass(1);
    EXPECT_THAT(provider_.flows, SizeIs(1));
  }
  EXPECT_THAT(log_.records(), ElementsAre("FlowHost: cannot accept on " + description(endpoint()) +
                                          ": POSIXErrorCode(rawValue: 24): Too many open files"));
  expectService();
}

}  // namespace platform::test
