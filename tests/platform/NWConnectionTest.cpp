#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <string>
#include <vector>

#include "platform/dispatch/MainLoop.h"
#include "platform/foundation/Description.h"
#include "platform/network/NWConnection.h"
#include "platform/network/OpenConnections.h"
#include "tests/platform/SocketFailures.h"
#include "tests/platform/UDPSocket.h"

namespace platform {
namespace {

using test::bytes;
using test::SocketFailures;
using test::UDPSocket;
using testing::ElementsAre;
using testing::IsEmpty;

using Connection = std::shared_ptr<NWConnection>;
using Lines = std::vector<std::string>;

constexpr char kRefused[] = "POSIXErrorCode(rawValue: 111): Connection refused";

/// Everything that connections say goes into one list of lines.
class NWConnectionTest : public testing::Test {
 protected:
  ~NWConnectionTest() override {
    auto& open = OpenConnections::shared();
    while (open.cancelIdleLongest()) {
    }
    open.setLimit(OpenConnections::usualLimit());
    runReady();
  }

  Connection make(const std::string& host, std::uint16_t port, const std::string& name = "") {
    auto connection = NWConnection::create(NWEndpoint::Host(host), NWEndpoint::Port(port));
    connection->stateUpdateHandler = [this, name](const NWConnection::State& state) {
      lines_.push_back(name + description(state));
    };
    return connection;
  }
  static void start(const Connection& connection) { connection->start(DispatchQueue::global()); }
  Connection startedTo(std::uint16_t port, const std::string& name = "") {
    auto connection = make("127.0.0.1", port, name);
    start(connection);
    return connection;
  }
  /// A connection that is ready, its states forgotten.
  Connection readyTo(std::uint16_t port, const std::string& name = "") {
    auto connection = startedTo(port, name);
    runReady();
    EXPECT_EQ(connection->state().kind, NWConnection::State::Kind::ready);
    lines_.clear();
    return connection;
  }

  void send(const Connection& connection, const std::string& text) {
    connection->send(bytes(text), [this, text](const std::optional<NWError>& error) {
      auto& line = lines_.emplace_back("sent ").append(shortened(text));
      if (error) {
        line.append(" ").append(description(*error));
      }
    });
  }
  void receive(const Connection& connection, const std::string& name = "") {
    connection->receiveMessage([this, name](const std::optional<Data>& content, bool isComplete,
                                            const std::optional<NWError>& error) {
      EXPECT_EQ(content.has_value(), !error.has_value());
      EXPECT_EQ(isComplete, content.has_value());
      lines_.emplace_back(name).append("got ").append(
          content ? shortened(std::string(textOf(*content))) : description(*error));
    });
  }

  static std::string shortened(const std::string& text) {
    return text.size() <= 20 ? text : std::to_string(text.size()) + " bytes";
  }
  static void runReady() { MainLoop::shared().runReady(); }
  bool runUntilLines(std::size_t count) {
    return MainLoop::shared().runUntil([&] { return lines_.size() >= count; });
  }

  Lines lines_;
};

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

TEST_F(NWConnectionTest, NothingCompletesAfterCancelling) {
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
  EXPECT_THAT(lines_, ElementsAre("cancelled"));
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
    connection->send(bytes("a"), [&](const auto&) { note("sent"); });
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

/// Cancels what it holds when it goes away itself.
struct CancelsAtItsEnd {
  explicit CancelsAtItsEnd(Connection held) : connection(std::move(held)) {}
  ~CancelsAtItsEnd() { connection->cancel(); }
  CancelsAtItsEnd(const CancelsAtItsEnd&) = delete;
  CancelsAtItsEnd& operator=(const CancelsAtItsEnd&) = delete;
  Connection connection;
};

TEST_F(NWConnectionTest, OneMoreCancelsTheOneIdleLongest) {
  OpenConnections::shared().setLimit(3);
  const UDPSocket server;
  const auto a = readyTo(server.port(), "a ");
  const auto b = readyTo(server.port(), "b ");
  const auto c = readyTo(server.port(), "c ");
  send(a, "q");
  const auto clientOfA = server.receive().value().from;
  send(b, "q");
  receive(a);
  server.send("answer", clientOfA);
  ASSERT_TRUE(runUntilLines(3));  // idle longest first: c, b, a
  lines_.clear();
  const auto d = startedTo(server.port(), "d ");
  EXPECT_EQ(NWConnection::openCount(), 3U);
  runReady();
  EXPECT_THAT(lines_, ElementsAre("c cancelled", "d setup", "d preparing", "d ready"));
  lines_.clear();
  OpenConnections::shared().setLimit(2);
  const auto e = make("no address", 1, "e ");
  start(e);
  EXPECT_EQ(NWConnection::openCount(), 2U);
  runReady();
  EXPECT_THAT(lines_, ElementsAre("b cancelled", "a cancelled", "e setup", "e preparing",
                                  "e waiting(-65554: NoSuchRecord)"));
}

/// The limit on open descriptors while it lives.
class DescriptorLimit {
 public:
  explicit DescriptorLimit(rlim_t limit) {
    ::getrlimit(RLIMIT_NOFILE, &former_);
    const rlimit lowered{limit, former_.rlim_max};
    EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &lowered), 0);
  }
  ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &former_); }
  DescriptorLimit(const DescriptorLimit&) = delete;
  DescriptorLimit& operator=(const DescriptorLimit&) = delete;

 private:
  rlimit former_{};
};

/// A limit under which no descriptor can be opened; what is open stays so.
rlim_t noRoom() {
  const FileDescriptor next(::dup(STDIN_FILENO));
  return static_cast<rlim_t>(next.get());
}

TEST_F(NWConnectionTest, WithoutADescriptorToBeHadItFails) {
  const auto connection = make("127.0.0.1", 53);
  {
    const DescriptorLimit limit(noRoom());
    start(connection);
  }
  receive(connection);
  runReady();
  const std::string error = "POSIXErrorCode(rawValue: 24): Too many open files";
  EXPECT_THAT(lines_, ElementsAre("setup", "preparing", "failed(" + error + ")", "got " + error));
  send(connection, "q");
  runReady();
  EXPECT_EQ(lines_.back(), "sent q " + error);
}

}  // namespace
}  // namespace platform
