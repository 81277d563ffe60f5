#include "platform/udp/UDPSocket.h"
#include "tests/platform/Test.h"

namespace platform::test {

// A connected client takes nothing from an address other than the one that it has sent to.
TEST(UDPSocketTest, AnswersLeaveWholeFromTheAddressThatWasSentTo) {
  const std::tuple<const char*, bool, const char*> rows[] = {{"127.0.0.9", false, "127.0.0.9"},
                                                             {"::1", false, "::1"},
                                                             {"0.0.0.0", false, "127.0.0.7"},
                                                             {"::", false, "::1"},
                                                             {"::", true, "::1"},
                                                             {"::", true, "127.0.0.6"}};
  const std::string large(65'507, 'x');
  DatagramSlots slots(2);
  for (const auto& [bound, takesIPv4, sentTo] : rows) {
    platform::UDPSocket socket;
    ASSERT_FALSE(socket.bind(address(bound), {.takesIPv4 = takesIPv4})) << bound;
    const auto destination = address(sentTo, socket.address().port());
    const UDPSocket client(destination.isIPv6() ? "::1" : "127.0.0.1");
    client.connect(destination);
    client.send(large, destination);
    const auto received = socket.receive(slots).value();
    ASSERT_EQ(received.size(), 1U) << bound;
    const auto path = received[0].path;
    EXPECT_TRUE(path.destination == destination) << bound;
    EXPECT_FALSE(socket.send(path, bytes(large)));
    socket.sendAll(
        std::vector<platform::UDPSocket::Answer>{{path, Data(65'536)}, {path, bytes("b")}});
    EXPECT_TRUE(client.receiveAll() == (std::vector<std::string>{large, "b"})) << bound;
  }
}

TEST(UDPSocketTest, BindsWhatIsFreeAndServesUntilItIsClosed) {
  const auto& own = OwnSockets::shared();
  platform::UDPSocket socket;
  platform::UDPSocket other;
  ASSERT_FALSE(socket.bind(address("0.0.0.0"), {}));
  const auto port = socket.address().port();
  EXPECT_EQ(other.bind(address("::", port), {.takesIPv4 = true}), std::errc::address_in_use);
  EXPECT_FALSE(other.isOpen());
  EXPECT_FALSE(other.bind(address("::", port), {}));
  EXPECT_TRUE(own.hasSent(address("127.0.0.2", port)));
  socket.close();
  EXPECT_FALSE(own.servesAt(address("127.0.0.2", port)));
  EXPECT_TRUE(own.servesAt(address("::1", port)));
  EXPECT_FALSE(socket.bind(address("::"), {.takesIPv4 = true}));
  EXPECT_TRUE(own.servesAt(address("127.0.0.2", socket.address().port())));
}

TEST(UDPSocketTest, ARefusalIsTheErrorOfALaterCallUnlessItIsDroppedOrKept) {
  const auto nobody = address("127.0.0.1", unusedPort());
  std::uint8_t room[1];
  platform::UDPSocket connected;
  ASSERT_FALSE(connected.open(AF_INET));
  ASSERT_FALSE(connected.connect(nobody));
  EXPECT_FALSE(connected.send(bytes("a")));
  EXPECT_EQ(connected.receive(room).error(), std::errc::connection_refused);
  EXPECT_FALSE(connected.send(bytes("b")));
  connected.dropRefusal();
  EXPECT_TRUE(platform::UDPSocket::wouldBlock(connected.receive(room).error()));
  platform::UDPSocket bound;
  ASSERT_FALSE(bound.bind(address("127.0.0.1"), {.keepsRefusals = true}));
  EXPECT_FALSE(bound.send({nobody, bound.address()}, bytes("c")));
  const auto refusal = bound.takeRefusal().value();
  EXPECT_TRUE(refusal.client == nobody);
  EXPECT_EQ(refusal.error, std::errc::connection_refused);
  EXPECT_FALSE(bound.takeRefusal());
}

}  // namespace platform::test
