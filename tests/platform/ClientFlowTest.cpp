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
using testing::Pair;
using testing::SizeIs;

class ClientFlowTest : public test::HostedTest {
 protected:
  ClientFlowTest() { start({"127.0.0.1", "127.0.0.2"}); }

  UDPSocket client_;
};

TEST_F(ClientFlowTest, WritesOnlyWhatComesFromTheAddressAsked) {
  const auto flow = flowOf(client_);
  const auto asked = endpoint(0);
  const auto other = endpoint(1);
  EXPECT_EQ(write(flow, {"a", "b"}, {asked, other}),
            "the client has not asked " + description(other));
  EXPECT_EQ(write(flow, {"a", "b"}, {asked}), "as many endpoints as datagrams are needed");
  EXPECT_THAT(client_.receiveAll(), IsEmpty());
  EXPECT_EQ(write(flow, {"a", "", "b"}, {asked, asked, asked}), "");
  EXPECT_EQ(write(flow, {}, {}), "");
  EXPECT_THAT(client_.receiveAll(), ElementsAre("a", "", "b"));
}

TEST_F(ClientFlowTest, AClosedSideGivesErrors) {
  const auto flow = flowOf(client_);
  flow->closeReadWithError(std::nullopt);
  EXPECT_THAT(read(flow), ElementsAre("the flow is closed"));
  EXPECT_EQ(answer(0, "a"), "");
  flow->closeWriteWithError(Error("upstream"));
  EXPECT_EQ(answer(0, "b"), "the flow is closed");
  EXPECT_THAT(client_.receiveAll(), ElementsAre("a"));
}

TEST_F(ClientFlowTest, AnswersWaitInTheirOrderUntilThereIsRoom) {
  const auto flow = flowOf(client_);
  const SocketFailures failures({0, EAGAIN, 0, EAGAIN, EPERM, 0});
  EXPECT_EQ(write(flow, {"a", "b", "c", "d"}, {4, endpoint()}),
            "POSIXErrorCode(rawValue: 1): Operation not permitted");
  EXPECT_THAT(client_.receiveAll(), ElementsAre("a", "b", "d"));
  EXPECT_EQ(answer(0, "e"), "");
  EXPECT_THAT(client_.receiveAll(), ElementsAre("e"));
  runReady();  // nobody waits for room any more
}

TEST_F(ClientFlowTest, SoManyAnswersWaitOnlyAndGoAfterTheFlowIsClosed) {
  const auto flow = flowOf(client_);
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
  EXPECT_THAT(client_.receiveAll(), SizeIs(ListenSocket::kMaxWaiting));
}

}  // namespace
}  // namespace platform
