#include "platform/udp/OwnSockets.h"
#include "tests/platform/ConnectionTest.h"
#include "tests/platform/SocketFailures.h"

namespace platform::test {

using NWConnectionTest = ConnectionTest;

constexpr char kRefused[] = "POSIXErrorCode(rawValue: 111): Connection refused";

TEST_F(NWConnectionTest, ReportsItsStatesLaterAndSendsAndReceivesNothingOnceCancelled) {
  const UDPSocket server;
  const auto connection = started("127.0.0.1", server.port());
  EXPECT_THAT(lines_, IsEmpty());
  EXPECT_EQ(NWConnection::openCount(), 1U);
  runReady();
  EXPECT_THAT(lines_, ElementsAre("setup", "preparing", "ready"));
  send(connection, "a");
  receive(connection);
  connection->cancel();
  EXPECT_EQ(NWConnection::openCount(), 0U);
  connection->cancel();
  send(connection, "b");
  receive(connection);
  EXPECT_THAT(lines_, SizeIs(3));
  runReady();
  connection->start(DispatchQueue::global());
  runReady();
  EXPECT_THAT(lines_,
              ElementsAre("setup", "preparing", "ready", "sent a",
                          "sent b POSIXErrorCode(rawValue: 125): Operation canceled", "cancelled"));
  EXPECT_THAT(server.receiveAll(), ElementsAre("a"));
}

TEST_F(NWConnectionTest, ServesReceivesInTheirOrderAndTakesNothingFromStrangers) {
  const UDPSocket server("::1");
  const UDPSocket stranger("::1");
  const auto connection = readyTo(server.port(), "", "::1");
  send(connection, "q");
  runReady();
  const auto client = server.receive().value().from;
  receive(connection, "1 ");
  receive(connection, "2 ");
  stranger.send("no", client);
  for (const char* text : {"a", "b", "c"}) {
    server.send(text, client);
  }
  ASSERT_TRUE(runUntilSize(lines_, 3));
  runReady();  // ends although nobody takes the third
  receive(connection, "3 ");
  ASSERT_TRUE(runUntilSize(lines_, 4));
  receive(connection, "4 ");
  server.send("d", client);
  ASSERT_TRUE(runUntilSize(lines_, 5));
  EXPECT_THAT(lines_, ElementsAre("sent q", "1 got a", "2 got b", "3 got c", "4 got d"));
}

// The kernel tells of the first refusal when the second datagram is sent.
TEST_F(NWConnectionTest, ARefusedPortIsTheErrorOfEachReceive) {
  const auto connection = readyTo(unusedPort());
  Texts expected(10, "sent q");
  for (std::size_t i = 0; i < 10; ++i) {
    send(connection, "q");
  }
  runReady();
  for (std::size_t i = 0; i < 10; ++i) {
    receive(connection);
  }
  ASSERT_TRUE(runUntilSize(lines_, 20));
  expected.resize(20, std::string("got ") + kRefused);
  const SocketFailures failures({ECONNREFUSED, ECONNREFUSED});
  send(connection, "refused twice");
  expected.emplace_back("sent refused twice");
  runReady();
  EXPECT_EQ(lines_, expected);
  EXPECT_EQ(description(connection->state()), "ready");
}

TEST_F(NWConnectionTest, ALinkIsNotCountedAndOnlyADatagramCompletesAReceive) {
  const auto port = unusedPort();
  const auto connection = make("127.0.0.1", port);
  connection->isLink = true;
  connection->start(DispatchQueue::global());
  EXPECT_EQ(NWConnection::openCount(), 0U);
  EXPECT_FALSE(OpenConnections::shared().cancelIdleLongest());
  receive(connection);
  const SocketFailures failures({0, EHOSTUNREACH});  // what a router says of "a"
  send(connection, "a");
  runReady();
  for (const char* text : {"b", "c", "lost with b"}) {
    send(connection, text);
  }
  runReady();
  const UDPSocket server("127.0.0.1", port);
  send(connection, "d");
  const auto received = server.receive().value();
  EXPECT_EQ(received.text, "d");
  server.send("answer", received.from);
  ASSERT_TRUE(runUntilSize(lines_, 9));
  EXPECT_THAT(lines_, ElementsAre("setup", "preparing", "ready", "sent a", "sent b", "sent c",
                                  "sent lost with b", "sent d", "got answer"));
}

TEST_F(NWConnectionTest, AnAddressThatThisProcessServesFailsAndLeavesNothing) {
  const OwnSockets::Entry served(address("0.0.0.0", 5300), OwnSockets::Use::serving);
  auto connection = started("::ffff:127.0.0.7", 5300);
  const std::weak_ptr<NWConnection> weak = connection;
  receive(connection);
  EXPECT_EQ(NWConnection::openCount(), 0U);
  runReady();
  const std::string error =
      "POSIXErrorCode(rawValue: 40): The address is served by this program itself";
  EXPECT_THAT(lines_, ElementsAre("setup", "preparing", "failed(" + error + ")", "got " + error));
  connection.reset();
  EXPECT_TRUE(weak.expired());
}

// Of a link the second call is for all that follow the first datagram.
TEST_F(NWConnectionTest, SendsWaitInTheirOrderUntilThereIsRoom) {
  const std::pair<bool, std::deque<int>> rows[] = {
      {false, {0, EAGAIN, 0, EAGAIN}}, {true, {0, EAGAIN, EAGAIN}}, {true, {0, 0, 0, 0, EAGAIN}}};
  for (const auto& [isLink, results] : rows) {
    const UDPSocket server;
    const auto connection = make("127.0.0.1", server.port());
    connection->isLink = isLink;
    connection->start(DispatchQueue::global());
    runReady();
    lines_.clear();
    const SocketFailures failures(results);
    send(connection, "a");
    send(connection, "b");
    send(connection, std::string(70000, 'x'));
    send(connection, "c");
    EXPECT_THAT(server.receiveAll(), ElementsAre("a"));
    ASSERT_TRUE(runUntilSize(lines_, 4));
    EXPECT_THAT(lines_,
                ElementsAre("sent a", "sent b",
                            testing::EndsWith("x POSIXErrorCode(rawValue: 90): Message too long"),
                            "sent c"));
    EXPECT_THAT(server.receiveAll(), ElementsAre("b", "c"));
    runReady();  // nobody waits for room any more
    send(connection, "d");
    send(connection, "e");
    connection->cancel();
    EXPECT_THAT(server.receiveAll(), ElementsAre("d", "e"));
  }
}

TEST_F(NWConnectionTest, MayBeCancelledFromInsideAnyOfItsHandlers) {
  const auto refused = std::string("got ") + kRefused;
  for (const auto& place : {"setup", "preparing", "ready", "sent q", "got a", refused.c_str()}) {
    const UDPSocket server;
    const auto port = place == refused ? unusedPort() : server.port();
    lines_.clear();
    const auto connection = make("127.0.0.1", port);
    onLine_ = [&](const std::string& line) {
      if (line == place) {
        connection->cancel();
        lines_.clear();
      }
    };
    connection->start(DispatchQueue::global());
    receive(connection);
    receive(connection);
    runReady();
    send(connection, "q");
    send(connection, "q");
    while (const auto received = server.receive()) {
      server.send("a", received->from);
    }
    ASSERT_TRUE(runUntil([&] { return std::ranges::count(lines_, "cancelled") == 1; })) << place;
    runReady();
    EXPECT_EQ(std::erase(lines_, "cancelled"), 1U);
    EXPECT_THAT(lines_, testing::Each(testing::StartsWith("sent q"))) << place;
    EXPECT_EQ(NWConnection::openCount(), 0U);
  }
}

}  // namespace platform::test
