#include <filesystem>

#include "platform/flowhost/SystemResolver.h"
#include "platform/network/NWConnection.h"
#include "platform/udp/OwnSockets.h"
#include "tests/platform/Test.h"
#include "tests/support/FakeFlow.h"

namespace platform::test {

using testing::Pair;

class SystemResolverTest : public testing::Test {
 protected:
  void configure(const std::string& text) const { directory_.replaceFile("resolv.conf", text); }

  LogCapture log_;
  TemporaryDirectory directory_;
  const std::filesystem::path file_ = directory_.path() / "resolv.conf";
};

TEST_F(SystemResolverTest, TakesTheFirstServerThatIsAnAddressOfSomebodyElse) {
  const std::tuple<const char*, const char*, std::uint16_t, const char*> rows[] = {
      {"nameserver dns.example\nnameserver 1.1.1.1\n", "::1", 53, "1.1.1.1"},
      {"nameserver 127.0.0.1\nnameserver 1.1.1.1\n", "127.0.0.1", 53, "1.1.1.1"},
      {"nameserver 127.0.0.1\nnameserver 1.1.1.1\n", "127.0.0.1", 5300, "127.0.0.1"},
      {"nameserver ::ffff:127.0.0.1\n", "127.0.0.1", 53, "none"},
      {"nameserver 127.0.0.7\nnameserver 192.0.2.1\n", "0.0.0.0", 53, "192.0.2.1"},
      {"nameserver 127.0.0.7\n", "0.0.0.0", 5300, "127.0.0.7"},
      {"nameserver 127.0.0.7\n", "::", 53, "127.0.0.7"},
      {"nameserver ::1\nnameserver 2001:db8::1\n", "::", 53, "2001:db8::1"},
      {"nameserver 0.0.0.0\nnameserver ::\n", "::1", 53, "none"}};
  for (const auto& [text, own, port, expected] : rows) {
    configure(text);
    const OwnSockets::Entry served(address(own, port), OwnSockets::Use::serving);
    const auto server = SystemResolver(file_, 53).server();
    EXPECT_EQ(server ? server->host() : "none", expected) << text;
  }
}

TEST_F(SystemResolverTest, ReadsTheFileAgainWhenItHasChanged) {
  SystemResolver resolver(file_, 53);
  const auto hostIn = [&](const std::string& text) {
    configure(text);
    const auto server = resolver.server();
    return server == resolver.server() && server ? server->host() : "none";
  };
  EXPECT_EQ(resolver.server(), std::nullopt);
  EXPECT_EQ(hostIn("nameserver 192.0.2.1\n"), "192.0.2.1");
  EXPECT_EQ(hostIn("nameserver 192.0.2.22\n"), "192.0.2.22");
  EXPECT_EQ(hostIn("# none\n"), "none");
  EXPECT_EQ(log_.records().size(), 2U) << "once for each state of the file";
}

TEST_F(SystemResolverTest, PassesDatagramsAndAnswersUnchanged) {
  const UDPSocket server;
  configure("nameserver 127.0.0.1\n");
  SystemResolver resolver(file_, server.port());
  const auto flow = std::make_shared<FakeFlow>(1, std::vector<Data>{bytes("one"), bytes("")});
  resolver.serve(flow, Transport::udp);
  runReady();
  const auto client = server.receive().value();
  EXPECT_EQ(client.text, "one");
  EXPECT_THAT(server.receiveAll(), ElementsAre(""));
  for (const char* text : {"", "two"}) {
    EXPECT_THAT(flow->closed, IsEmpty());
    server.send(text, client.from);
    runReady();
  }
  EXPECT_THAT(flow->written, ElementsAre(Pair(bytes(""), Endpoint{"127.0.0.1", "5300"}),
                                         Pair(bytes("two"), Endpoint{"127.0.0.1", "5301"})));
  EXPECT_THAT(flow->closed, ElementsAre("read nil", "write nil"));
  EXPECT_EQ(NWConnection::openCount(), 0U);
}

TEST_F(SystemResolverTest, ClosesTheFlowWithTheErrorThatEndsIt) {
  const std::string local = "nameserver 127.0.0.1\n";
  const std::string broadcast = "nameserver 127.255.255.255\n";
  const std::vector<Data> two{bytes("a"), bytes("b")};
  const std::tuple<std::string, std::vector<Data>, Failure, std::string> rows[] = {
      {"", two, {}, "Optional(no DNS server of the system's own)"},
      {local, two, {}, "Optional(POSIXErrorCode(rawValue: 111): Connection refused)"},
      {broadcast, two, {}, "Optional(POSIXErrorCode(rawValue: 13): Permission denied)"},
      {local, two, Error("no read"), "Optional(no read)"},
      {local, {}, {}, "nil"},
      {local, {Data(65508)}, {}, "Optional(POSIXErrorCode(rawValue: 90): Message too long)"}};
  for (const auto& [configuration, datagrams, readError, error] : rows) {
    configure(configuration);
    SystemResolver resolver(file_, unusedPort());
    const auto flow = std::make_shared<FakeFlow>(1, datagrams);
    flow->readError = readError;
    const std::weak_ptr<FakeFlow> weak = flow;
    resolver.serve(flow, Transport::udp);
    ASSERT_TRUE(runUntil([&] { return !flow->closed.empty(); })) << error;
    runReady();
    EXPECT_THAT(flow->closed, ElementsAre("read " + error, "write " + error));
    EXPECT_THAT(flow->written, IsEmpty());
    EXPECT_EQ(NWConnection::openCount(), 0U);
    EXPECT_EQ(weak.use_count(), 1) << "somebody still holds the flow";
  }
}

/// Flows that a server of the test's own is asked by TCP.
class SystemResolverByTCPTest : public SystemResolverTest {
 protected:
  SystemResolverByTCPTest() { configure("nameserver 127.0.0.1\n"); }

  std::shared_ptr<FakeFlow> served(const char* query = "query") {
    auto flow = std::make_shared<FakeFlow>(1, std::vector<Data>{bytes(query)});
    resolver_.serve(flow, Transport::tcp);
    runReady();
    return flow;
  }

  SharedClock clock_;
  TCPServer server_;
  SystemResolver resolver_{file_, server_.port()};
};

TEST_F(SystemResolverByTCPTest, PassesQueryAndAnswerUnchangedAndLetsGoOfTheFlow) {
  const auto flow = served("one");
  auto connection = server_.accept();
  EXPECT_TRUE(OwnSockets::tcp().hasSent(connection.peer()));
  EXPECT_EQ(connection.received(), framed("one"));
  for (const auto& piece : {framed("answer").substr(0, 4), framed("answer").substr(4)}) {
    EXPECT_THAT(flow->closed, IsEmpty());
    connection.send(piece);
    runReady();
  }
  EXPECT_THAT(flow->written, ElementsAre(Pair(bytes("answer"), Endpoint{"127.0.0.1", "5300"})));
  EXPECT_THAT(flow->closed, ElementsAre("read nil", "write nil"));
  EXPECT_TRUE(connection.isClosed());
  EXPECT_EQ(flow.use_count(), 1);
}

TEST_F(SystemResolverByTCPTest, ClosesTheFlowWhateverTheServerDoes) {
  const std::string closing = "the server has closed the connection";
  const std::tuple<std::string, bool, std::string> rows[] = {
      {"", true, closing},
      {"\xff\xff" + std::string(60'000, 'x'), true, closing},
      {framed("") + framed("answer"), false, "an answer of no octets"},
      {framed("answer").substr(0, 4), false, "no answer in time"}};
  for (const auto& [sent, closes, error] : rows) {
    const auto flow = served();
    const auto peer = server_.accept();
    peer.send(sent);
    if (closes) {
      peer.endSending();
    }
    clock_.pass(9.9);
    EXPECT_EQ(flow->closed.empty(), error == "no answer in time");
    clock_.pass(0.1);
    EXPECT_EQ(flow->closed.at(0), "read Optional(" + error + ")");
    EXPECT_THAT(flow->written, IsEmpty());
    EXPECT_EQ(flow.use_count(), 1);
  }
}

TEST_F(SystemResolverByTCPTest, OneFlowMoreThanMayBeAskedGivesUpTheOldest) {
  std::vector<std::shared_ptr<FakeFlow>> flows;
  for (std::size_t i = 0; i < SystemResolver::kMaxStreams; ++i) {
    flows.push_back(served());
  }
  EXPECT_THAT(flows[0]->closed, IsEmpty());
  flows.push_back(served());
  EXPECT_EQ(flows[0]->closed.at(0), "read Optional(given up to make room)");
  EXPECT_THAT(flows[1]->closed, IsEmpty());
  clock_.pass(10);
  EXPECT_EQ(flows.back()->closed.at(0), "read Optional(no answer in time)");
  server_.close();
  EXPECT_EQ(served()->closed.at(0),
            "read Optional(POSIXErrorCode(rawValue: 111): Connection refused)");
}

}  // namespace platform::test
