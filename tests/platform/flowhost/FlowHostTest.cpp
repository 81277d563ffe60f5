#include <map>

#include "platform/flowhost/ListenSocket.h"
#include "tests/platform/HostedTest.h"
#include "tests/support/NetworkNamespace.h"

namespace platform::test {

using FlowHostTest = HostedTest;

TEST_F(FlowHostTest, OffersWhatOneClientHasSentToOneAddressAsOneFlowUnlessTheClientIsOurs) {
  start({"0.0.0.0"});
  const UDPSocket first;
  const UDPSocket second;
  const UDPSocket ours;
  const OwnSockets::Entry exchange(ours.address(), OwnSockets::Use::exchange);
  ours.send("round", bound(0, "127.0.0.1"));
  first.send("a", bound(0, "127.0.0.1"));
  second.send("b", bound(0, "127.0.0.1"));
  first.send("", bound(0, "127.0.0.1"));
  first.send("c", bound(0, "127.0.0.2"));
  for (int i = 0; i < 3; ++i) {
    first.send(std::string(40'000, 'x'), bound(0, "127.0.0.3"));  // the second fills a flow
  }
  offered(4);
  EXPECT_THAT(log_.records(), ElementsAre("FlowHost: dropped 5 bytes from our own socket " +
                                          description(ours.address())));
  const auto to1 = " to 127.0.0.1:" + endpoint().port;
  EXPECT_THAT(read(provider_.flows[0]), ElementsAre("a" + to1, to1));
  EXPECT_THAT(read(provider_.flows[0]), IsEmpty());
  EXPECT_THAT(read(provider_.flows[1]), ElementsAre("b" + to1));
  EXPECT_THAT(read(provider_.flows[2]), ElementsAre("c to 127.0.0.2:" + endpoint().port));
  EXPECT_EQ(answer(2, "d"), "");
  EXPECT_TRUE(first.receive().value().from == bound(0, "127.0.0.2"));
  EXPECT_THAT(read(provider_.flows[3]), SizeIs(2));
  EXPECT_THAT(read(provider_.flows[4]), SizeIs(1));
}

TEST_F(FlowHostTest, ABroadcastIsAnsweredFromAUnicastAddress) {
  const auto network =
      NetworkNamespace::enter({"-6 route replace local ff00::/8 dev lo table local"});
  if (!network) {
    GTEST_SKIP() << "needs a network of its own";
  }
  start({"0.0.0.0", "::"});
  FlowHostOptions beside;
  beside.listen = {{"::", endpoint(0).port}};
  EXPECT_TRUE(FlowHost::bind(beside)) << "IPv4's wildcard address leaves IPv6's";
  for (const auto& [group, unicast] :
       {std::pair("127.255.255.255", "127.0.0.1"), std::pair("ff02::1%lo", "::1")}) {
    const auto index = provider_.flows.size();
    const UDPSocket client(unicast);
    client.send("q", bound(index, group));
    EXPECT_EQ(answer(index, "a"), "");
    EXPECT_EQ(client.receive().value().from.host(), unicast);
  }
}

TEST_F(FlowHostTest, AnErrorOfTheSocketIsOneLineAnEpisodeAndServiceGoesOn) {
  start({"127.0.0.1", "::1"});
  Texts lines;
  for (const std::size_t index : {0U, 0U, 1U}) {
    const UDPSocket client(endpoint(index).hostname);
    const SocketFailures failures({EINTR, ENOMEM, ENOMEM, ENOMEM, 0});
    client.send("q", bound(index));
    EXPECT_EQ(answer(lines.size(), "a"), "");
    EXPECT_THAT(client.receiveAll(), ElementsAre("a"));
    lines.push_back("FlowHost: cannot receive on " + description(endpoint(index)) +
                    ": POSIXErrorCode(rawValue: 12): Cannot allocate memory");
  }
  EXPECT_EQ(log_.records(), lines);
}

/// With one flow, whose client is this.
class OneFlowTest : public FlowHostTest {
 protected:
  OneFlowTest() {
    start({"127.0.0.1", "127.0.0.2"});
    client_.send("q", bound());
    flow_ = offered(0);
  }

  const UDPSocket client_;
  Flow flow_;
};

TEST_F(OneFlowTest, WritesOnlyWhatComesFromItsDestinationUntilItIsClosed) {
  const auto own = endpoint(0);
  const auto other = endpoint(1);
  EXPECT_EQ(write(flow_, {"a", "b"}, {own, other}),
            "the client has not asked " + description(other));
  EXPECT_EQ(write(flow_, {"a", "b"}, {own}), "as many endpoints as datagrams are needed");
  EXPECT_THAT(client_.receiveAll(), IsEmpty());
  EXPECT_EQ(write(flow_, {"a", "", "b"}, {own, own, own}), "");
  EXPECT_EQ(write(flow_, {}, {}), "");
  flow_->closeReadWithError(std::nullopt);
  EXPECT_THAT(read(flow_), ElementsAre("the flow is closed"));
  EXPECT_EQ(answer(0, "c"), "");
  flow_->closeWriteWithError(Error("upstream"));
  EXPECT_EQ(answer(0, "d"), "the flow is closed");
  EXPECT_THAT(client_.receiveAll(), ElementsAre("a", "", "b", "c"));
}

TEST_F(OneFlowTest, AnswersWaitInTheirOrderUntilThereIsRoom) {
  const std::string large(70'000, 'x');
  const std::tuple<std::deque<int>, std::string, std::string> rows[] = {
      {{EINTR, 0, EINTR, EAGAIN, EAGAIN, 0, EPERM, 0}, "c", "1): Operation not permitted"},
      {{0, 0, 0, EAGAIN, EAGAIN}, large, "90): Message too long"},
      {{0, EAGAIN, 0, EAGAIN, EAGAIN}, large, "90): Message too long"}};
  for (const auto& [results, third, error] : rows) {
    runReady();  // another iteration
    const SocketFailures failures(results);
    EXPECT_EQ(write(flow_, {"a", "b", third, "d"}, {4, endpoint()}),
              "POSIXErrorCode(rawValue: " + error);
    EXPECT_EQ(answer(0, "e"), "");
    EXPECT_THAT(client_.receiveAll(), ElementsAre("a", "b", "d", "e"));
    runReady();  // nobody waits for room any more
  }
}

TEST_F(OneFlowTest, SoManyAnswersWaitOnlyAndGoAfterTheFlowIsClosed) {
  const SocketFailures failures({EAGAIN});
  std::map<std::string, int> outcomes;
  for (std::size_t i = 0; i < ListenSocket::kMaxWaiting + 10; ++i) {
    flow_->writeDatagrams({bytes("a")}, {endpoint()},
                          [&](const auto& error) { ++outcomes[error ? error->text() : ""]; });
  }
  flow_->closeReadWithError(std::nullopt);
  flow_->closeWriteWithError(std::nullopt);
  runReady();
  EXPECT_EQ(outcomes[""], ListenSocket::kMaxWaiting);
  EXPECT_EQ(outcomes["POSIXErrorCode(rawValue: 105): No buffer space available"], 10);
  EXPECT_THAT(client_.receiveAll(), SizeIs(ListenSocket::kMaxWaiting));
}

TEST_F(OneFlowTest, StopEndsEverything) {
  const auto address = bound();
  TCPClient byTCP(address);
  byTCP.query("q");
  offered(1);
  std::string outcome;
  const SocketFailures failures({EAGAIN});
  flow_->writeDatagrams({bytes("a")}, {endpoint()},
                        [&](const auto& error) { outcome = error.value().text(); });
  client_.send("not read any more", address);
  host_->stop();
  host_->stop();
  runReady();
  EXPECT_EQ(outcome, "POSIXErrorCode(rawValue: 125): Operation canceled");
  EXPECT_EQ(answer(0, "b"), "the flow is closed");
  EXPECT_EQ(answer(1, "b"), "the flow is closed");
  EXPECT_TRUE(byTCP.isClosed());
  EXPECT_THROW(TCPClient{address}, std::runtime_error);
  EXPECT_THAT(provider_.flows, SizeIs(2));
  EXPECT_THAT(host_->boundEndpoints(), IsEmpty());
  const UDPSocket successor("127.0.0.1", address.port());  // the port is free
}

TEST_F(FlowHostTest, SaysWhatCannotBeBoundAndBindsNothing) {
  const UDPSocket taken("::1");
  const auto port = std::to_string(taken.port());
  const TCPServer takenByTCP;
  const auto tcpPort = std::to_string(takenByTCP.port());
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {"::1", port, "[::1]:" + port + ": Address already in use"},
      {"127.0.0.1", tcpPort, "127.0.0.1:" + tcpPort + " by TCP: Address already in use"},
      {"192.0.2.1", "0", "192.0.2.1:0: Cannot assign requested address"},
      {"127.0.0.1", "65536", "127.0.0.1:65536: not an IP address and a port"}};
  for (const auto& [hostname, text, error] : rows) {
    const auto good = unusedPort("127.0.0.5");
    FlowHostOptions options;
    options.listen = {{"127.0.0.5", std::to_string(good)}, {hostname, text}};
    const auto host = FlowHost::bind(options);
    ASSERT_FALSE(host);
    EXPECT_EQ(host.error().text(), "cannot listen on " + error);
    const UDPSocket successor("127.0.0.5", good);
  }
}

}  // namespace platform::test
