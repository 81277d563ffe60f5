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
  const auto flow = offered(1);
  ASSERT_THAT(provider_.offers, SizeIs(2));
  const auto to = " to " + description(endpoint());
  EXPECT_THAT(read(provider_.offers[0].flow), ElementsAre("a" + to, to));
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
      {"127.0.0.9", "127.0.0.9", "127.0.0.1"},        {"::1", "::1", "::1"},
      {"0.0.0.0", "127.0.0.7", "127.0.0.1"},          {"::", "::1", "::1"},
      {"::ffff:127.0.0.6", "127.0.0.6", "127.0.0.1"},
  };
  for (const auto& row : rows) {
    provider_.offers.clear();
    start({row.listen});
    const auto asked = bound(0, row.asked);
    const UDPSocket client(row.client);
    client.connect(asked);
    client.send("q", asked);
    const auto flow = offered(0);
    const NWHostEndpoint expected{row.asked, endpoint().port};
    EXPECT_EQ(provider_.offers[0].asked, expected) << row.listen;
    EXPECT_THAT(read(flow), ElementsAre("q to " + description(expected)));
    EXPECT_EQ(answer(0, "a"), "") << row.listen;
    EXPECT_THAT(client.receiveAll(), ElementsAre("a")) << row.listen;
  }
}

TEST_F(FlowHostTest, OneClientThatAsksTwoAddressesMakesTwoFlows) {
  start({"0.0.0.0"});
  const UDPSocket client;
  for (const char* host : {"127.0.0.2", "127.0.0.3", "127.0.0.2"}) {
    client.send("q", bound(0, host));
  }
  offered(1);
  ASSERT_THAT(provider_.offers, SizeIs(2));
  EXPECT_THAT(read(provider_.offers[0].flow), SizeIs(2));
  for (const std::size_t offer : {1U, 0U}) {
    EXPECT_EQ(answer(offer, "a"), "");
    EXPECT_EQ(client.receive().value().from.host(), provider_.offers[offer].asked.hostname);
  }
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
  std::size_t next = 0;
  for (const auto& offer : provider_.offers) {
    for (const auto& text : read(offer.flow)) {
      EXPECT_EQ(text, std::to_string(next++) + " to " + description(endpoint()));
    }
  }
  EXPECT_EQ(next, kDatagrams);
}

TEST_F(FlowHostTest, AnErrorOfTheSocketIsOneLineAndServiceGoesOn) {
  start({"127.0.0.1"});
  const UDPSocket client;
  const SocketFailures failures({EINTR, ENOMEM, ENOMEM, ENOMEM, 0});
  flowOf(client);
  EXPECT_EQ(answer(0, "a"), "");
  EXPECT_THAT(client.receiveAll(), ElementsAre("a"));
  EXPECT_THAT(log_.records(),
              ElementsAre("FlowHost: cannot receive on " + description(endpoint()) +
                          ": POSIXErrorCode(rawValue: 12): Cannot allocate memory"));
}

TEST_F(FlowHostTest, StopEndsEverything) {
  start({"127.0.0.1", "::1"});
  const auto address = bound();
  const UDPSocket client;
  const auto flow = flowOf(client);
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
  EXPECT_THAT(provider_.offers, SizeIs(1));
  EXPECT_THAT(host_->boundEndpoints(), IsEmpty());
  const UDPSocket successor("127.0.0.1", address.port());  // the port is free
}

TEST_F(FlowHostTest, DeclinedFlowsGoToTheSystemsResolver) {
  const UDPSocket resolver("127.0.0.3");
  resolverPort_ = resolver.port();
  test::writeFile(directory_.path() / "resolv.conf", "nameserver 127.0.0.3\n");
  start({"0.0.0.0"});
  provider_.takesFlows = false;
  const auto asked = bound(0, "127.0.0.4");
  for (const char* question : {"first", "second"}) {
    const UDPSocket client;
    client.connect(asked);
    client.send(question, asked);
    std::optional<UDPSocket::Received> received;
    ASSERT_TRUE(runUntil([&] { return (received = resolver.receive()).has_value(); }));
    EXPECT_EQ(received->text, question);
    resolver.send("answer", received->from);
    ASSERT_TRUE(runUntil([&] { return (received = client.receive()).has_value(); }));
    EXPECT_EQ(received->text, "answer");
  }
}

TEST_F(FlowHostTest, SaysWhatCannotBeBoundAndBindsNothing) {
  const UDPSocket taken("::1");
  const auto port = std::to_string(taken.port());
  const std::string noAddress = "not an IP address and a port";
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {"::1", port, "[::1]:" + port + ": Address already in use"},
      {"192.0.2.1", "0", "192.0.2.1:0: Cannot assign requested address"},
      {"localhost", "0", "localhost:0: " + noAddress},
      {"127.0.0.1", "", "127.0.0.1:: " + noAddress},
      {"127.0.0.1", "65536", "127.0.0.1:65536: " + noAddress},
      {"127.0.0.1", "5x", "127.0.0.1:5x: " + noAddress},
  };
  for (const auto& [hostname, text, error] : rows) {
    const auto good = test::unusedPort("127.0.0.5");
    FlowHostOptions options;
    options.listen = {{"127.0.0.5", std::to_string(good)}, {hostname, text}};
    const auto host = FlowHost::start(provider_, options);
    ASSERT_FALSE(host);
    EXPECT_EQ(host.error().text(), "cannot listen on " + error);
    const UDPSocket successor("127.0.0.5", good);
  }
}

}  // namespace
}  // namespace platform
