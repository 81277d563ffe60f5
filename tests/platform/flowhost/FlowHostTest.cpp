#include <cerrno>
#include <map>

#include "platform/flowhost/ListenSocket.h"
#include "platform/udp/OwnSockets.h"
#include "tests/platform/HostedTest.h"
#include "tests/platform/SocketFailures.h"
#include "tests/platform/TCPClient.h"

namespace platform {
namespace {

using test::bytes;
using test::SocketFailures;
using test::UDPSocket;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class FlowHostTest : public test::HostedTest {};

TEST_F(FlowHostTest, OffersWhatOneClientHasSentToOneAddressAsOneFlow) {
  start({"0.0.0.0"});
  const UDPSocket first;
  const UDPSocket second;
  first.send("a", bound(0, "127.0.0.1"));
  second.send("b", bound(0, "127.0.0.1"));
  first.send("", bound(0, "127.0.0.1"));
  first.send("c", bound(0, "127.0.0.2"));
  offered(2);
  ASSERT_THAT(provider_.offers, SizeIs(3));
  const auto to1 = " to 127.0.0.1:" + endpoint().port;
  EXPECT_THAT(read(provider_.offers[0].flow), ElementsAre("a" + to1, to1));
  EXPECT_THAT(read(provider_.offers[0].flow), IsEmpty());
  EXPECT_THAT(read(provider_.offers[1].flow), ElementsAre("b" + to1));
  EXPECT_THAT(read(provider_.offers[2].flow), ElementsAre("c to 127.0.0.2:" + endpoint().port));
  EXPECT_EQ(write(provider_.offers[2].flow, {"d"}, {{"127.0.0.2", endpoint().port}}), "");
  EXPECT_TRUE(first.receive().value().from == bound(0, "127.0.0.2"));
  for (int i = 0; i < 3; ++i) {
    first.send(std::string(40'000, 'x'), bound(0, "127.0.0.1"));  // the second fills a flow
  }
  offered(4);
  EXPECT_THAT(read(provider_.offers[3].flow), SizeIs(2));
  EXPECT_THAT(read(provider_.offers[4].flow), SizeIs(1));
}

TEST_F(FlowHostTest, WhatOurOwnSocketsSendIsDroppedWithALine) {
  start({"0.0.0.0"});
  const UDPSocket client;
  const auto address = SocketAddress::parse("127.0.0.1", client.port()).value();
  std::optional<OwnSockets::Entry> exchange;
  exchange.emplace(address, OwnSockets::Use::exchange);
  client.send("round", bound(0, "127.0.0.1"));
  runReady();
  EXPECT_THAT(provider_.offers, IsEmpty());
  EXPECT_THAT(log_.records(),
              ElementsAre("FlowHost: dropped 5 bytes from our own socket " + description(address)));
  exchange.reset();
  client.send("in", bound(0, "127.0.0.1"));
  offered(0);
}

TEST_F(FlowHostTest, AnErrorOfTheSocketIsOneLineAnEpisodeAndServiceGoesOn) {
  start({"127.0.0.1", "::1"});
  std::vector<std::string> lines;
  for (const std::size_t index : {0U, 0U, 1U}) {
    const UDPSocket client(endpoint(index).hostname);
    const SocketFailures failures({EINTR, ENOMEM, ENOMEM, ENOMEM, 0});
    client.send("q", bound(index));
    offered(lines.size());
    EXPECT_EQ(answer(lines.size(), "a"), "");
    EXPECT_THAT(client.receiveAll(), ElementsAre("a"));
    lines.push_back("FlowHost: cannot receive on " + description(endpoint(index)) +
                    ": POSIXErrorCode(rawValue: 12): Cannot allocate memory");
  }
  EXPECT_EQ(log_.records(), lines);
}

TEST_F(FlowHostTest, WritesOnlyWhatComesFromTheAddressAskedUntilTheFlowIsClosed) {
  start({"127.0.0.1", "127.0.0.2"});
  const UDPSocket client;
  const auto flow = flowOf(client);
  const auto asked = endpoint(0);
  const auto other = endpoint(1);
  EXPECT_EQ(write(flow, {"a", "b"}, {asked, other}),
            "the client has not asked " + description(other));
  EXPECT_EQ(write(flow, {"a", "b"}, {asked}), "as many endpoints as datagrams are needed");
  EXPECT_THAT(client.receiveAll(), IsEmpty());
  EXPECT_EQ(write(flow, {"a", "", "b"}, {asked, asked, asked}), "");
  EXPECT_EQ(write(flow, {}, {}), "");
  EXPECT_THAT(client.receiveAll(), ElementsAre("a", "", "b"));
  flow->closeReadWithError(std::nullopt);
  EXPECT_THAT(read(flow), ElementsAre("the flow is closed"));
  EXPECT_EQ(answer(0, "c"), "");
  flow->closeWriteWithError(Error("upstream"));
  EXPECT_EQ(answer(0, "d"), "the flow is closed");
  EXPECT_THAT(client.receiveAll(), ElementsAre("c"));
}

TEST_F(FlowHostTest, AnswersWaitInTheirOrderUntilThereIsRoom) {
  start({"127.0.0.1"});
  const UDPSocket client;
  const auto flow = flowOf(client);
  const SocketFailures failures({EINTR, 0, EAGAIN, 0, EAGAIN, EPERM, 0});
  EXPECT_EQ(write(flow, {"a", "b", "c", "d"}, {4, endpoint()}),
            "POSIXErrorCode(rawValue: 1): Operation not permitted");
  EXPECT_EQ(answer(0, "e"), "");
  EXPECT_THAT(client.receiveAll(), ElementsAre("a", "b", "d", "e"));
  runReady();  // nobody waits for room any more
}

TEST_F(FlowHostTest, SoManyAnswersWaitOnlyAndGoAfterTheFlowIsClosed) {
  start({"127.0.0.1"});
  const UDPSocket client;
  const auto flow = flowOf(client);
  const SocketFailures failures({EAGAIN});
  std::map<std::string, int> outcomes;
  for (std::size_t i = 0; i < ListenSocket::kMaxWaiting + 10; ++i) {
    flow->writeDatagrams({bytes("a")}, {endpoint()},
                         [&](const auto& error) { ++outcomes[error ? error->text() : ""]; });
  }
  flow->closeReadWithError(std::nullopt);
  flow->closeWriteWithError(std::nullopt);
  runReady();
  EXPECT_THAT(outcomes,
              ElementsAre(Pair("", ListenSocket::kMaxWaiting),
                          Pair("POSIXErrorCode(rawValue: 105): No buffer space available", 10)));
  EXPECT_THAT(client.receiveAll(), SizeIs(ListenSocket::kMaxWaiting));
}

TEST_F(FlowHostTest, StopEndsEverything) {
  start({"127.0.0.1", "::1"});
  const auto address = bound();
  const UDPSocket client;
  const auto flow = flowOf(client);
  test::TCPClient byTCP(address);
  byTCP.query("q");
  offered(1);
  std::string outcome;
  const SocketFailures failures({EAGAIN});
  flow->writeDatagrams({bytes("a")}, {endpoint()},
                       [&](const auto& error) { outcome = error.value().text(); });
  client.send("not read any more", address);
  host_->stop();
  host_->stop();
  runReady();
  EXPECT_EQ(outcome, "POSIXErrorCode(rawValue: 125): Operation canceled");
  EXPECT_EQ(answer(0, "b"), "the flow is closed");
  EXPECT_EQ(answer(1, "b"), "the flow is closed");
  EXPECT_TRUE(byTCP.isClosed());
  EXPECT_THROW(test::TCPClient{address}, std::runtime_error);
  EXPECT_THAT(provider_.offers, SizeIs(2));
  EXPECT_THAT(host_->boundEndpoints(), IsEmpty());
  const UDPSocket successor("127.0.0.1", address.port());  // the port is free
}

TEST_F(FlowHostTest, SaysWhatCannotBeBoundAndBindsNothing) {
  const UDPSocket taken("::1");
  const auto port = std::to_string(taken.port());
  const test::TCPServer takenByTCP;
  const auto tcpPort = std::to_string(takenByTCP.port());
  const std::string noAddress = "not an IP address and a port";
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {"::1", port, "[::1]:" + port + ": Address already in use"},
      {"127.0.0.1", tcpPort, "127.0.0.1:" + tcpPort + " by TCP: Address already in use"},
      {"192.0.2.1", "0", "192.0.2.1:0: Cannot assign requested address"},
      {"127.0.0.1", "65536", "127.0.0.1:65536: " + noAddress},
      {"127.0.0.1", "5x", "127.0.0.1:5x: " + noAddress},
  };
  for (const auto& [hostname, text, error] : rows) {
    const auto good = test::unusedPort("127.0.0.5");
    FlowHostOptions options;
    options.listen = {{"127.0.0.5", std::to_string(good)}, {hostname, text}};
    const auto host = FlowHost::bind(options);
    ASSERT_FALSE(host);
    EXPECT_EQ(host.error().text(), "cannot listen on " + error);
    const UDPSocket successor("127.0.0.5", good);
  }
}

}  // namespace
}  // namespace platform
