#include <cerrno>

#include "platform/flowhost/DatagramSlots.h"
#include "tests/platform/HostedTest.h"
#include "tests/platform/SocketFailures.h"

namespace platform {
namespace {

using test::bytes;
using test::SocketFailures;
using test::UDPSocket;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class FlowHostTest : public test::HostedTest {};

TEST_F(FlowHostTest, OffersWhatOneClientHasSentAsOneFlow) {
  start({"127.0.0.1"});
  const UDPSocket first;
  const UDPSocket second;
  first.send("a", bound());
  second.send("b", bound());
  first.send("", bound());
  second.send("c", bound());
  first.send("d", bound());
  const auto flow = offered(1);
  ASSERT_THAT(provider_.offers, SizeIs(2));
  const auto asked = host_->boundEndpoints().at(0);
  const auto to = " to " + description(asked);
  EXPECT_EQ(provider_.offers[0].asked, asked);
  EXPECT_THAT(read(provider_.offers[0].flow), ElementsAre("a" + to, to, "d" + to));
  EXPECT_THAT(read(flow), ElementsAre("b" + to, "c" + to));
  EXPECT_THAT(read(flow), IsEmpty());
}

// A connected client takes nothing from an address other than the one it has asked.
TEST_F(FlowHostTest, AnswersLeaveFromTheAddressThatWasAsked) {
  const struct {
    const char* listen;
    const char* asked;
    const char* client;
  } rows[] = {
      {"127.0.0.1", "127.0.0.1", "127.0.0.1"},
      {"127.0.0.9", "127.0.0.9", "127.0.0.1"},
      {"::1", "::1", "::1"},
      {"0.0.0.0", "127.0.0.1", "127.0.0.1"},
      {"0.0.0.0", "127.0.0.7", "127.0.0.1"},
      {"0.0.0.0", "127.0.0.8", "127.0.0.8"},
      {"::", "::1", "::1"},
      {"::ffff:127.0.0.6", "127.0.0.6", "127.0.0.1"},
  };
  for (const auto& row : rows) {
    provider_.offers.clear();
    start({row.listen});
    auto asked = SocketAddress::parse(row.asked, bound().port()).value();
    const UDPSocket client(row.client);
    client.connect(asked);
    client.send("q", asked);
    const auto flow = offered(0);
    const NWHostEndpoint endpoint{row.asked, std::to_string(bound().port())};
    EXPECT_EQ(provider_.offers[0].asked, endpoint) << row.listen;
    EXPECT_THAT(read(flow), ElementsAre("q to " + description(endpoint)));
    EXPECT_EQ(answer(flow, "a"), "") << row.listen << row.asked;
    EXPECT_THAT(client.receiveAll(), ElementsAre("a")) << row.listen << row.asked;
  }
}

TEST_F(FlowHostTest, OneClientThatAsksTwoAddressesMakesTwoFlows) {
  start({"0.0.0.0"});
  const auto port = bound().port();
  const UDPSocket client;
  client.send("a", SocketAddress::parse("127.0.0.2", port).value());
  client.send("b", SocketAddress::parse("127.0.0.3", port).value());
  client.send("c", SocketAddress::parse("127.0.0.2", port).value());
  offered(1);
  ASSERT_THAT(provider_.offers, SizeIs(2));
  EXPECT_THAT(read(provider_.offers[0].flow), SizeIs(2));
  EXPECT_EQ(answer(provider_.offers[1].flow, "to b"), "");
  EXPECT_EQ(answer(provider_.offers[0].flow, "to a"), "");
  const auto first = client.receive().value();
  EXPECT_EQ(first.text, "to b");
  EXPECT_EQ(first.from.host(), "127.0.0.3");
  const auto second = client.receive().value();
  EXPECT_EQ(second.text, "to a");
  EXPECT_EQ(second.from.host(), "127.0.0.2");
}

// More datagrams than one read takes: as many flows as reads, nothing lost, in order.
TEST_F(FlowHostTest, AFloodOfOneClientComesInSeveralFlows) {
  constexpr std::size_t kDatagrams = 5 * DatagramSlots::kSlots + 3;
  start({"127.0.0.1"});
  const UDPSocket client;
  for (std::size_t i = 0; i < kDatagrams; ++i) {
    client.send(std::to_string(i), bound());
  }
  offered(5);
  const auto to = " to " + description(host_->boundEndpoints().at(0));
  std::size_t next = 0;
  for (const auto& offer : provider_.offers) {
    for (const auto& text : read(offer.flow)) {
      EXPECT_EQ(text, std::to_string(next++) + to);
    }
  }
  EXPECT_EQ(next, kDatagrams);
}

TEST_F(FlowHostTest, AnErrorOfTheSocketIsOneLineAndServiceGoesOn) {
  start({"127.0.0.1"});
  const UDPSocket client;
  client.send("q", bound());
  const SocketFailures failures({EINTR, ENOMEM, ENOMEM, ENOMEM, 0});
  EXPECT_EQ(answer(offered(0), "a"), "");
  EXPECT_THAT(client.receiveAll(), ElementsAre("a"));
  EXPECT_THAT(
      log_.records(),
      ElementsAre("FlowHost: cannot receive on " + description(host_->boundEndpoints().at(0)) +
                  ": POSIXErrorCode(rawValue: 12): Cannot allocate memory"));
}

TEST_F(FlowHostTest, StopEndsEverything) {
  start({"127.0.0.1", "::1"});
  const auto address = bound();
  const auto endpoint = host_->boundEndpoints().at(0);
  const UDPSocket client;
  client.send("q", address);
  const auto flow = offered(0);
  std::string outcome;
  {
    const SocketFailures failures({EAGAIN});
    flow->writeDatagrams({bytes("a")}, {endpoint},
                         [&](const auto& error) { outcome = error.value().text(); });
    client.send("not read any more", address);
    host_->stop();
    host_->stop();
  }
  runReady();
  EXPECT_EQ(outcome, "POSIXErrorCode(rawValue: 125): Operation canceled");
  EXPECT_EQ(answer(flow, "b"), "the flow is closed");
  EXPECT_THAT(provider_.offers, SizeIs(1));
  EXPECT_THAT(host_->boundEndpoints(), IsEmpty());
  const UDPSocket successor("127.0.0.1", address.port());  // the port is free
}

TEST_F(FlowHostTest, DeclinedFlowsGoToTheSystemsResolver) {
  const UDPSocket resolver("127.0.0.3");
  resolverPort_ = resolver.port();
  test::writeFile(directory_.path() / "resolv.conf", "nameserver 127.0.0.3\n");
  start({"0.0.0.0"});
  provider_.decision = [] { return false; };
  const auto asked = SocketAddress::parse("127.0.0.4", bound().port()).value();
  std::vector<UDPSocket> clients(5);
  for (std::size_t i = 0; i < clients.size(); ++i) {
    clients[i].connect(asked);
    clients[i].send("first of " + std::to_string(i), asked);
    clients[i].send("second of " + std::to_string(i), asked);
  }
  std::map<std::string, SocketAddress> questions;
  ASSERT_TRUE(runUntil([&] {
    while (const auto received = resolver.receive()) {
      questions.emplace(received->text, received->from);
    }
    return questions.size() == 2 * clients.size();
  }));
  for (const auto& [text, from] : questions) {
    resolver.send("answer to " + text, from);
  }
  std::size_t answers = 0;
  ASSERT_TRUE(runUntil([&] {
    for (std::size_t i = 0; i < clients.size(); ++i) {
      for (const auto& text : clients[i].receiveAll()) {
        EXPECT_THAT(text, testing::AnyOf("answer to first of " + std::to_string(i),
                                         "answer to second of " + std::to_string(i)));
        ++answers;
      }
    }
    return answers == questions.size();
  }));
}

TEST_F(FlowHostTest, SaysWhatCannotBeBound) {
  const UDPSocket taken;
  const UDPSocket taken6("::1");
  const auto port = std::to_string(taken.port());
  const auto port6 = std::to_string(taken6.port());
  const struct {
    NWHostEndpoint endpoint;
    std::string error;
  } rows[] = {
      {{"127.0.0.1", port}, "cannot listen on 127.0.0.1:" + port + ": Address already in use"},
      {{"0.0.0.0", port}, "cannot listen on 0.0.0.0:" + port + ": Address already in use"},
      {{"::1", port6}, "cannot listen on [::1]:" + port6 + ": Address already in use"},
      {{"192.0.2.1", "0"}, "cannot listen on 192.0.2.1:0: Cannot assign requested address"},
      {{"localhost", "0"}, "cannot listen on localhost:0: not an IP address and a port"},
      {{"127.0.0.1", ""}, "cannot listen on 127.0.0.1:: not an IP address and a port"},
      {{"127.0.0.1", "65536"}, "cannot listen on 127.0.0.1:65536: not an IP address and a port"},
      {{"127.0.0.1", "-1"}, "cannot listen on 127.0.0.1:-1: not an IP address and a port"},
      {{"127.0.0.1", "5x"}, "cannot listen on 127.0.0.1:5x: not an IP address and a port"},
  };
  for (const auto& row : rows) {
    FlowHostOptions options;
    const auto good = std::to_string(test::unusedPort("127.0.0.5"));
    options.listen = {{"127.0.0.5", good}, row.endpoint};
    const auto host = FlowHost::start(provider_, options);
    ASSERT_FALSE(host);
    EXPECT_EQ(host.error().text(), row.error);
    const UDPSocket successor("127.0.0.5", static_cast<std::uint16_t>(std::stoi(good)));
  }
}

}  // namespace
}  // namespace platform
