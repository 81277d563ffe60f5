#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <list>
#include <string>
#include <vector>

#include "platform/base/Description.h"
#include "platform/dispatch/MainLoop.h"
#include "platform/flowhost/SystemResolver.h"
#include "platform/network/NWConnection.h"
#include "platform/udp/OwnSockets.h"
#include "tests/platform/TemporaryDirectory.h"
#include "tests/platform/UDPSocket.h"
#include "tests/support/FakeFlow.h"
#include "tests/support/LogCapture.h"

namespace platform {
namespace {

using quillet::test::FakeFlow;
using test::bytes;
using test::UDPSocket;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

SocketAddress address(const std::string& host, std::uint16_t port) {
  return SocketAddress::parse(host, port).value();
}

class SystemResolverTest : public testing::Test {
 protected:
  void configure(const std::string& text) const { directory_.replaceFile("resolv.conf", text); }

  quillet::test::LogCapture log_;
  test::TemporaryDirectory directory_;
  const std::filesystem::path file_ = directory_.path() / "resolv.conf";
};

TEST_F(SystemResolverTest, TakesTheFirstServerThatIsAnAddressOfSomebodyElse) {
  const struct {
    const char* text;
    std::vector<SocketAddress> own;
    const char* server;
  } rows[] = {
      {"nameserver dns.example\nnameserver 1.1.1.1\n", {}, "1.1.1.1"},
      {"nameserver 127.0.0.1\nnameserver 1.1.1.1\n", {address("127.0.0.1", 53)}, "1.1.1.1"},
      {"nameserver 127.0.0.1\nnameserver 1.1.1.1\n", {address("127.0.0.1", 5300)}, "127.0.0.1"},
      {"nameserver ::ffff:127.0.0.1\n", {address("127.0.0.1", 53)}, "none"},
      {"nameserver 127.0.0.7\nnameserver 192.0.2.1\n", {address("0.0.0.0", 53)}, "192.0.2.1"},
      {"nameserver 127.0.0.7\n", {address("0.0.0.0", 5300), address("::", 53)}, "127.0.0.7"},
      {"nameserver ::1\nnameserver 2001:db8::1\n", {address("::", 53)}, "2001:db8::1"},
      {"nameserver 0.0.0.0\nnameserver ::\n", {}, "none"},
  };
  for (const auto& row : rows) {
    configure(row.text);
    std::list<OwnSockets::Entry> own;
    for (const auto& served : row.own) {
      own.emplace_back(served, OwnSockets::Use::serving);
    }
    const auto server = SystemResolver(file_, 53).server();
    EXPECT_EQ(server ? server->host() : "none", row.server) << row.text;
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
  MainLoop::shared().runReady();
  const auto client = server.receive().value();
  EXPECT_EQ(client.text, "one");
  EXPECT_THAT(server.receiveAll(), ElementsAre(""));
  for (const char* text : {"", "two"}) {
    EXPECT_THAT(flow->closed, IsEmpty());
    server.send(text, client.from);
    MainLoop::shared().runReady();
  }
  EXPECT_THAT(flow->written, ElementsAre(Pair(bytes(""), NWHostEndpoint{"127.0.0.1", "5300"}),
                                         Pair(bytes("two"), NWHostEndpoint{"127.0.0.1", "5301"})));
  EXPECT_THAT(flow->closed, ElementsAre("read nil", "write nil"));
  EXPECT_EQ(NWConnection::openCount(), 0U);
}

TEST_F(SystemResolverTest, ClosesTheFlowWithTheErrorThatEndsIt) {
  const auto nothing = [](FakeFlow&) {};
  const struct {
    std::string configuration;
    std::function<void(FakeFlow&)> change;
    std::string error;
  } rows[] = {
      {"", nothing, "Optional(no DNS server of the system's own)"},
      {"nameserver 127.0.0.1\n", nothing,
       "Optional(POSIXErrorCode(rawValue: 111): Connection refused)"},
      {"nameserver 127.255.255.255\n", nothing,
       "Optional(POSIXErrorCode(rawValue: 13): Permission denied)"},
      {"nameserver 127.0.0.1\n", [](FakeFlow& flow) { flow.readError = Error("no read"); },
       "Optional(no read)"},
      {"nameserver 127.0.0.1\n", [](FakeFlow& flow) { flow.toRead->clear(); }, "nil"},
      {"nameserver 127.0.0.1\n", [](FakeFlow& flow) { flow.toRead = {Data(65508)}; },
       "Optional(POSIXErrorCode(rawValue: 90): Message too long)"},
  };
  for (const auto& row : rows) {
    configure(row.configuration);
    SystemResolver resolver(file_, test::unusedPort());
    const auto flow = std::make_shared<FakeFlow>(1, std::vector<Data>{bytes("a"), bytes("b")});
    row.change(*flow);
    const std::weak_ptr<FakeFlow> weak = flow;
    resolver.serve(flow, Transport::udp);
    ASSERT_TRUE(MainLoop::shared().runUntil([&] { return !flow->closed.empty(); })) << row.error;
    MainLoop::shared().runReady();
    EXPECT_THAT(flow->closed, ElementsAre("read " + row.error, "write " + row.error));
    EXPECT_THAT(flow->written, IsEmpty());
    EXPECT_EQ(NWConnection::openCount(), 0U);
    EXPECT_EQ(weak.use_count(), 1) << "somebody still holds the flow";
  }
}

}  // namespace
}  // namespace platform
