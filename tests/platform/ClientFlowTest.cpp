#include <cerrno>
#include <map>

#include "platform/flowhost/ListenSocket.h"
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

class ClientFlowTest : public test::HostedTest {};

TEST_F(ClientFlowTest, LargestDatagramsPassBothWays) {
  start({"127.0.0.1", "0.0.0.0"});
  const std::string large(65507, 'x');
  for (std::size_t index = 0; index < 2; ++index) {
    const UDPSocket client;
    const auto asked = SocketAddress::parse("127.0.0.1", bound(index).port()).value();
    client.send(large, asked);
    client.send(large, asked);
    const auto flow = offered(index);
    const auto read = ClientFlowTest::read(flow);
    ASSERT_THAT(read, SizeIs(2));
    for (const auto& text : read) {
      EXPECT_TRUE(text.starts_with(large + " to "));
    }
    EXPECT_EQ(answer(flow, large), "");
    EXPECT_TRUE(client.receive().value().text == large);
    EXPECT_EQ(answer(flow, large + "x"), "POSIXErrorCode(rawValue: 90): Message too long");
  }
}

TEST_F(ClientFlowTest, WritesOnlyWhatComesFromTheAddressAsked) {
  start({"127.0.0.1", "127.0.0.2"});
  const UDPSocket client;
  client.send("q", bound());
  const auto flow = offered(0);
  const auto asked = host_->boundEndpoints().at(0);
  const auto other = host_->boundEndpoints().at(1);
  EXPECT_EQ(write(flow, {"a"}, {other}), "the client has not asked " + description(other));
  EXPECT_EQ(write(flow, {"a", "b"}, {asked, other}),
            "the client has not asked " + description(other));
  EXPECT_EQ(write(flow, {"a", "b"}, {asked}), "as many endpoints as datagrams are needed");
  EXPECT_THAT(client.receiveAll(), IsEmpty());
  EXPECT_EQ(write(flow, {"a", "", "b"}, {asked, asked, asked}), "");
  EXPECT_EQ(write(flow, {}, {}), "");
  EXPECT_THAT(client.receiveAll(), ElementsAre("a", "", "b"));
}

TEST_F(ClientFlowTest, AClosedSideGivesErrors) {
  start({"127.0.0.1"});
  const UDPSocket client;
  client.send("q", bound());
  const auto flow = offered(0);
  flow->closeReadWithError(std::nullopt);
  EXPECT_THAT(read(flow), ElementsAre("the flow is closed"));
  EXPECT_EQ(answer(flow, "a"), "");
  flow->closeWriteWithError(Error("upstream"));
  EXPECT_EQ(answer(flow, "b"), "the flow is closed");
  flow->closeReadWithError(std::nullopt);
  flow->closeWriteWithError(std::nullopt);
  EXPECT_EQ(answer(flow, "c"), "the flow is closed");
  EXPECT_THAT(client.receiveAll(), ElementsAre("a"));
}

TEST_F(ClientFlowTest, AnswersWaitInTheirOrderUntilThereIsRoom) {
  start({"127.0.0.1"});
  const UDPSocket client;
  client.send("q", bound());
  const auto flow = offered(0);
  const auto asked = host_->boundEndpoints().at(0);
  const SocketFailures failures({0, EAGAIN, EAGAIN, EAGAIN, 0, EPERM, 0});
  EXPECT_EQ(write(flow, {"a", "b", "c", "d"}, {asked, asked, asked, asked}),
            "POSIXErrorCode(rawValue: 1): Operation not permitted");
  EXPECT_THAT(client.receiveAll(), ElementsAre("a", "b", "d"));
  EXPECT_EQ(answer(flow, "e"), "");
  EXPECT_THAT(client.receiveAll(), ElementsAre("e"));
  runReady();  // nobody waits for room any more
}

TEST_F(ClientFlowTest, SoManyAnswersWaitOnly) {
  start({"127.0.0.1"});
  const UDPSocket client;
  client.send("q", bound());
  const auto flow = offered(0);
  const auto asked = host_->boundEndpoints().at(0);
  const SocketFailures failures({EAGAIN});
  std::map<std::string, int> outcomes;
  const auto count = ListenSocket::kMaxWaiting + 10;
  for (std::size_t i = 0; i < count; ++i) {
    flow->writeDatagrams({bytes("a")}, {asked},
                         [&](const auto& error) { ++outcomes[error ? error->text() : ""]; });
  }
  flow->closeReadWithError(std::nullopt);
  flow->closeWriteWithError(std::nullopt);
  runReady();
  EXPECT_THAT(
      outcomes,
      ElementsAre(testing::Pair("", ListenSocket::kMaxWaiting),
                  testing::Pair("POSIXErrorCode(rawValue: 105): No buffer space available", 10)));
  EXPECT_THAT(client.receiveAll(), SizeIs(ListenSocket::kMaxWaiting));
}

}  // namespace
}  // namespace platform
