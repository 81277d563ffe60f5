#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "tests/platform/ConnectionTest.h"
#include "tests/platform/SocketFailures.h"

namespace platform {
namespace {

using test::bytes;
using test::Lines;
using test::SocketFailures;
using test::UDPSocket;
using testing::ElementsAre;
using testing::IsEmpty;

class NWConnectionTest : public test::ConnectionTest {};

constexpr char kRefused[] = "POSIXErrorCode(rawValue: 111): Connection refused";

TEST_F(NWConnectionTest, ReportsItsStatesOneAfterTheOtherLater) {
  const UDPSocket server;
  const auto connection = startedTo(server.port());
  EXPECT_THAT(lines_, IsEmpty());
  EXPECT_EQ(description(connection->state()), "setup");
  EXPECT_EQ(NWConnection::openCount(), 1U);
  runReady();
  EXPECT_THAT(lines_, ElementsAre("setup", "preparing", "ready"));
  EXPECT_EQ(description(connection->state()), "ready");
  connection->cancel();
  EXPECT_EQ(NWConnection::openCount(), 0U);
  EXPECT_EQ(description(connection->state()), "ready");
  connection->cancel();
  runReady();
  EXPECT_THAT(lines_, ElementsAre("setup", "preparing", "ready", "cancelled"));
  EXPECT_EQ(description(connection->state()), "cancelled");
  start(connection);
  runReady();
  EXPECT_THAT(lines_, testing::SizeIs(4));
}

TEST_F(NWConnectionTest, CarriesDatagramsBothWaysWhole) {
  for (const char* host : {"127.0.0.1", "::1", "localhost", "::ffff:127.0.0.1"}) {
    const UDPSocket server(std::string(host) == "::1" ? "::1" : "127.0.0.1");
    lines_.clear();
    const auto connection = make(host, server.port());
    start(connection);
    runReady();
    ASSERT_THAT(lines_, ElementsAre("setup", "preparing", "ready")) << host;
    lines_.clear();
    for (const auto size : {1UL, 0UL, 512UL, 1500UL, 65507UL}) {
      const std::string text(size, 'x');
      send(connection, text);
      receive(connection);
      EXPECT_THAT(lines_, IsEmpty());
      const auto received = server.receive().value();
      EXPECT_TRUE(received.text == text);
      server.send(text, received.from);
      ASSERT_TRUE(runUntilLines(2));
      EXPECT_THAT(lines_, ElementsAre("sent " + shortened(text), "got " + shortened(text)));
      lines_.clear();
    }
    connection->cancel();
    runReady();
  }
}

TEST_F(NWConnectionTest, ServesReceivesInTheirOrder) {
  const UDPSocket server;
  const auto connection = readyTo(server.port());
  send(connection, "q");
  runReady();
  const auto client = server.receive().value().from;
  receive(connection, "1 ");
  receive(connection, "2 ");
  for (const char* text : {"a", "b", "c"}) {
    server.send(text, client);
  }
  ASSERT_TRUE(runUntilLines(3));
  runReady();  // ends although nobody takes the third
  receive(connection, "3 ");
  ASSERT_TRUE(runUntilLines(4));
  receive(connection, "4 ");
  server.send("d", client);
  ASSERT_TRUE(runUntilLines(5));
  EXPECT_THAT(lines_, ElementsAre("sent q", "1 got a", "2 got b", "3 got c", "4 got d"));
}

TEST_F(NWConnectionTest, TakesNothingFromStrangers) {
  const UDPSocket server;
  const UDPSocket stranger;
  const auto connection = readyTo(server.port());
  send(connection, "q");
  const auto client = server.receive().value().from;
  receive(connection);
  stranger.send("no", client);
  server.send("yes", client);
  ASSERT_TRUE(runUntilLines(2));
  EXPECT_THAT(lines_, ElementsAre("sent q", "got yes"));
}

// The kernel tells of the first refusal when the second datagram is sent.
TEST_F(NWConnectionTest, ARefusedPortIsTheErrorOfEachReceive) {
  for (const std::size_t count : {1U, 2U, 3U, 10U}) {
    const auto connection = readyTo(test::unusedPort());
    Lines expected;
    for (std::size_t i = 0; i < count; ++i) {
      send(connection, "q");
      expected.emplace_back("sent q");
    }
    runReady();
    EXPECT_EQ(lines_, expected);
    for (std::size_t i = 0; i < count; ++i) {
      receive(connection);
      expected.push_back(std::string("got ") + kRefused);
    }
    ASSERT_TRUE(runUntilLines(2 * count)) << count;
    EXPECT_EQ(lines_, expected);
    EXPECT_EQ(description(connection->state()), "ready");
    connection->cancel();
    runReady();
  }
}

TEST_F(NWConnectionTest, ADatagramThatNobodyMissesIsDroppedAtARefusal) {
  const auto port = test::unusedPort();
  const auto connection = readyTo(port);
  connection->sendsAfterRefusal = false;
  for (const char* text : {"a", "b", "c"}) {
    send(connection, text);
    runReady();
  }
  EXPECT_THAT(lines_, ElementsAre("sent a", std::string("sent b ") + kRefused, "sent c"));
  const UDPSocket server("127.0.0.1", port);
  send(connection, "d");
  send(connection, "e");
  runReady();
  EXPECT_THAT(server.receiveAll(), ElementsAre("e"));
}

TEST_F(NWConnectionTest, AHostThatIsNoAddressWaits) {
  for (const std::string host : {"", "example.com", "127.1", "localhost.", "::1%nosuch"}) {
    lines_.clear();
    const auto connection = make(host, 53);
    start(connection);
    receive(connection);
    runReady();
    const std::string error = "-65554: NoSuchRecord";
    EXPECT_THAT(lines_,
                ElementsAre("setup", "preparing", "waiting(" + error + ")", "got " + error));
    send(connection, "q");
    receive(connection);
    runReady();
    EXPECT_THAT(Lines(lines_.begin() + 4, lines_.end()),
                ElementsAre("sent q " + error, "got " + error));
    EXPECT_EQ(NWConnection::openCount(), 1U);
    connection->cancel();
    runReady();
    EXPECT_EQ(lines_.back(), "cancelled");
    EXPECT_EQ(NWConnection::openCount(), 0U);
  }
}

TEST_F(NWConnectionTest, SendsFromStartOnAndNotBefore) {
  const UDPSocket server;
  const auto connection = make("127.0.0.1", server.port());
  send(connection, "a");
  start(connection);
  send(connection, "b");
  EXPECT_THAT(lines_, IsEmpty());
  runReady();
  const std::string error = " POSIXErrorCode(rawValue: 107): Transport endpoint is not connected";
  EXPECT_THAT(lines_, ElementsAre("sent a" + error, "sent b", "setup", "preparing", "ready"));
  EXPECT_THAT(server.receiveAll(), ElementsAre("b"));
}

TEST_F(NWConnectionTest, SendsWaitInTheirOrderUntilThereIsRoom) {
  const UDPSocket server;
  const auto connection = readyTo(server.port());
  {
    const SocketFailures failures({0, EAGAIN, EAGAIN, EAGAIN});
    send(connection, "a");
    send(connection, "b");
    send(connection, std::string(70000, 'x'));
    send(connection, "c");
    EXPECT_THAT(server.receiveAll(), ElementsAre("a"));
    ASSERT_TRUE(runUntilLines(4));
  }
  EXPECT_THAT(lines_, ElementsAre("sent a", "sent b",
                                  "sent 70000 bytes POSIXErrorCode(rawValue: 90): Message too long",
                                  "sent c"));
  EXPECT_THAT(server.receiveAll(), ElementsAre("b", "c"));
  runReady();  // nobody waits for room any more
}

TEST_F(NWConnectionTest, NothingIsSentOrReceivedAfterCancelling) {
  const UDPSocket server;
  const auto connection = readyTo(server.port());
  send(connection, "a");
  receive(connection);
  receive(connection);
  server.send("b", server.receive().value().from);
  connection->cancel();
  send(connection, "c");
  receive(connection);
  runReady();
  EXPECT_THAT(lines_,
              ElementsAre("sent a", "sent c POSIXErrorCode(rawValue: 125): Operation canceled",
                          "cancelled"));
  EXPECT_THAT(server.receiveAll(), IsEmpty());
}

TEST_F(NWConnectionTest, MayBeCancelledFromInsideAnyOfItsHandlers) {
  const std::string places[] = {"setup", "preparing", "ready", "sent", "refused", "got"};
  for (const auto& place : places) {
    const UDPSocket server;
    const auto port = place == "refused" ? test::unusedPort() : server.port();
    Lines seen;
    const auto connection =
        NWConnection::create(NWEndpoint::Host("127.0.0.1"), NWEndpoint::Port(port));
    const auto note = [&](const std::string& what) {
      seen.push_back(what);
      if (what == place) {
        connection->cancel();
      }
    };
    connection->stateUpdateHandler = [&](const auto& state) { note(description(state)); };
    start(connection);
    for (int i = 0; i < 2; ++i) {
      connection->receiveMessage(
          [&](const auto&, bool isComplete, const auto&) { note(isComplete ? "got" : "refused"); });
    }
    runReady();
    connection->send(bytes("a"), [&](const auto& error) {
      if (!error) {
        note("sent");
      }
    });
    connection->send(bytes("a"), [&](const auto&) {});
    while (const auto received = server.receive()) {
      server.send("b", received->from);
    }
    const bool isOver =
        MainLoop::shared().runUntil([&] { return !seen.empty() && seen.back() == "cancelled"; });
    ASSERT_TRUE(isOver) << place;
    runReady();
    ASSERT_GE(seen.size(), 2U);
    EXPECT_EQ(seen[seen.size() - 2], place);
    EXPECT_EQ(NWConnection::openCount(), 0U);
  }
}

/// Counts itself, as what handlers own.
struct Counted {
  explicit Counted(int& counter) : count(counter) { ++count; }
  Counted(const Counted& other) : count(other.count) { ++count; }
  Counted& operator=(const Counted&) = delete;
  ~Counted() { --count; }
  int& count;
};

TEST_F(NWConnectionTest, KeepsItselfAndItsHandlersUntilItIsCancelled) {
  const UDPSocket server;
  int owned = 0;
  std::weak_ptr<NWConnection> weak;
  {
    const auto connection =
        NWConnection::create(NWEndpoint::Host("127.0.0.1"), NWEndpoint::Port(server.port()));
    weak = connection;
    // Each handler owns the connection: a cycle until it is cancelled.
    connection->stateUpdateHandler = [connection, counted = Counted(owned)](const auto&) {};
    start(connection);
    runReady();
    connection->send(bytes("a"), [connection, counted = Counted(owned)](const auto&) {});
    connection->receiveMessage([connection, counted = Counted(owned)](auto&&...) {});
    connection->receiveMessage([connection, counted = Counted(owned)](auto&&...) {});
  }
  EXPECT_EQ(owned, 4);
  runReady();
  EXPECT_EQ(owned, 3);  // the send is over
  weak.lock()->cancel();
  EXPECT_EQ(owned, 1);
  runReady();
  EXPECT_EQ(owned, 0);
  EXPECT_TRUE(weak.expired());
}

}  // namespace
}  // namespace platform
