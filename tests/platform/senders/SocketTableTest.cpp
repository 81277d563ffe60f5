#include <poll.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "platform/senders/SocketTable.h"
#include "platform/udp/PacketInfo.h"
#include "platform/udp/UDPSocket.h"
#include "tests/platform/Test.h"
#include "tests/platform/UDPSocket.h"
#include "tests/support/NetworkNamespace.h"

namespace platform::test {

using quillet::test::NetworkNamespace;

SocketAddress address(const std::string& host, std::uint16_t port) {
  return SocketAddress::parse(host, port).value();
}

/// The IPv6 form of an IPv4 address, which `parse` does not give.
SocketAddress mapped(const std::string& host, std::uint16_t port) {
  auto result = address("::", port);
  auto* const octets = result.v6().sin6_addr.s6_addr;
  octets[10] = octets[11] = 0xFF;
  std::memcpy(octets + 12, &address(host, 0).v4().sin_addr, 4);
  return result;
}

/// A client's socket, driven by hand.
struct Client {
  explicit Client(sa_family_t family, int kind = SOCK_DGRAM)
      : socket(::socket(family, kind | SOCK_CLOEXEC, 0)) {}

  static void require(bool isDone) { ASSERT_TRUE(isDone) << std::strerror(errno); }
  void bind(const SocketAddress& to) const {
    require(::bind(socket.get(), to.data(), to.size()) == 0);
  }
  void connect(const SocketAddress& to) const {
    require(::connect(socket.get(), to.data(), to.size()) == 0);
  }
  void send(const SocketAddress& to) const {
    require(::sendto(socket.get(), "q", 1, 0, to.data(), to.size()) == 1);
  }
  void bindToDevice(const std::string& name) const {
    const auto size = static_cast<socklen_t>(name.size());
    require(::setsockopt(socket.get(), SOL_SOCKET, SO_BINDTODEVICE, name.data(), size) == 0);
  }
  [[nodiscard]] SocketAddress local() const {
    SocketAddress own;
    socklen_t size = SocketAddress::kMaxSize;
    ::getsockname(socket.get(), own.data(), &size);
    return own;
  }
  [[nodiscard]] std::uint32_t inode() const {
    struct stat state {};
    ::fstat(socket.get(), &state);
    return static_cast<std::uint32_t>(state.st_ino);
  }

  FileDescriptor socket;
};

/// Serves as the proxy does, and looks up who has sent.
class SocketTableTest : public testing::Test {
 protected:
  void serve(const std::string& host) {
    ASSERT_FALSE(server_.bind(address(host, 0), {.receiveBuffer = 4096, .tellsInterface = true}));
  }
  [[nodiscard]] SocketAddress at(const std::string& host) const {
    return address(host, server_.address().port());
  }
  SocketPath received() {
    pollfd arrival{server_.get(), POLLIN, 0};
    EXPECT_EQ(::poll(&arrival, 1, 10'000), 1);
    const auto datagrams = server_.receive(slots_).value();
    EXPECT_EQ(datagrams.size(), 1U);
    const auto& [path, bytes, interfaceIndex] = datagrams.front();
    return {Transport::udp, path.client, path.destination, interfaceIndex};
  }
  /// The inode of the socket that has sent; 0 for none.
  std::uint32_t sender() { return inode(table_.exact(received())); }
  static std::uint32_t inode(const std::optional<SocketOwner>& owner) {
    return owner ? owner->inode : 0;
  }

  platform::UDPSocket server_;
  DatagramSlots slots_;
  SocketTable table_;
};

TEST_F(SocketTableTest, FindsTheSocketThatHasSent) {
  const auto network = NetworkNamespace::enter();
  if (!network || !NetworkNamespace::ip("link add quillet0 type veth peer name quillet1") ||
      !NetworkNamespace::ip("address add 192.0.2.9/24 dev quillet0") ||
      !NetworkNamespace::ip("link set quillet0 up") ||
      !NetworkNamespace::ip("link set quillet1 up")) {
    GTEST_SKIP() << "no network namespace";
  }
  const struct {
    const char* served;
    const char* asked;
    sa_family_t family;
    std::string device;
    bool isConnected;
  } rows[] = {
      {"127.0.0.1", "127.0.0.1", AF_INET, "", false},
      {"127.0.0.1", "127.0.0.1", AF_INET6, "", true},
      {"0.0.0.0", "127.0.0.5", AF_INET, "", true},
      {"0.0.0.0", "192.0.2.9", AF_INET, "quillet0", false},
      {"::1", "::1", AF_INET6, "", false},
      {"::1", "::1", AF_INET6, "lo", true},
  };
  for (const auto& [served, asked, family, device, isConnected] : rows) {
    serve(served);
    const Client client(family);
    if (!device.empty()) {
      client.bindToDevice(device);
    }
    const bool isMapped = family == AF_INET6 && at(asked).family() == AF_INET;
    const auto to = isMapped ? mapped(asked, at(asked).port()) : at(asked);
    if (isConnected) {
      client.connect(to);
    }
    client.send(to);
    EXPECT_EQ(sender(), client.inode()) << asked << " of " << family << device;
    server_.close();
  }
}

TEST_F(SocketTableTest, FindsNoSocketThatHasNotSent) {
  serve("127.0.0.1");
  auto client = std::make_unique<Client>(AF_INET);
  client->send(at("127.0.0.1"));
  const auto port = client->local().port();
  const auto path = received();
  client.reset();
  EXPECT_FALSE(table_.exact(path)) << "closed";
  const Client elsewhere(AF_INET);
  elsewhere.bind(address("127.0.0.2", port));
  const Client only6(AF_INET6);
  const int yes = 1;
  ::setsockopt(only6.socket.get(), IPPROTO_IPV6, IPV6_V6ONLY, &yes, sizeof yes);
  only6.bind(address("::", port));
  EXPECT_FALSE(table_.exact(path));
  EXPECT_FALSE(table_.byPort(path.client));
  // A machine of the network, and a socket of ours that is bound to no address.
  const Client unbound(AF_INET);
  unbound.bind(address("0.0.0.0", 0));
  const auto other = address("192.0.2.77", unbound.local().port());
  EXPECT_FALSE(table_.exact({Transport::udp, other, at("127.0.0.1"), 1}));
  EXPECT_FALSE(table_.byPort(other));
}

// The kernel's lookup in the order in which the datagram went would find the server.
TEST_F(SocketTableTest, NeverTakesOurOwnSocket) {
  serve("0.0.0.0");
  const auto gone = address("127.0.0.1", unusedPort());
  EXPECT_FALSE(table_.exact({Transport::udp, gone, at("127.0.0.1"), 1}));
  EXPECT_FALSE(table_.byPort(at("127.0.0.1")));
  platform::UDPSocket own;
  ASSERT_FALSE(own.open(AF_INET));
  ASSERT_FALSE(own.connect(at("127.0.0.1")));
  EXPECT_FALSE(table_.byPort(own.address()));
}

TEST_F(SocketTableTest, FindsByItsPortWhoHasSentElsewhere) {
  serve("127.0.0.1");
  for (const sa_family_t family : {sa_family_t{AF_INET}, sa_family_t{AF_INET6}}) {
    const Client unbound(family);
    unbound.bind(address(family == AF_INET ? "0.0.0.0" : "::", 0));
    const auto client = address("127.0.0.1", unbound.local().port());
    EXPECT_EQ(inode(table_.byPort(client)), unbound.inode());
  }
  const Client connected(AF_INET);
  connected.connect(address("127.0.0.3", 9));
  EXPECT_FALSE(table_.exact({Transport::udp, connected.local(), at("127.0.0.1"), 1}));
  EXPECT_EQ(inode(table_.byPort(connected.local())), connected.inode());
  EXPECT_EQ(inode(table_.exact({Transport::udp, connected.local(), address("127.0.0.3", 9), 1})),
            connected.inode());
}

TEST_F(SocketTableTest, FindsTheClientsEndOfAConnection) {
  const std::tuple<const char*, bool, bool> rows[] = {
      {"127.0.0.1", true, false},
      {"127.0.0.1", false, true},
      {"::1", false, true},
  };
  for (const auto& [host, isMapped, isBoundToDevice] : rows) {
    const auto family = address(host, 0).family();
    const Client listener(family, SOCK_STREAM);
    listener.bind(address(host, 0));
    ASSERT_EQ(::listen(listener.socket.get(), 1), 0);
    const auto served = listener.local();
    Client client(isMapped ? sa_family_t{AF_INET6} : family, SOCK_STREAM);
    if (isBoundToDevice) {
      client.bindToDevice("lo");
    }
    client.connect(isMapped ? mapped(host, served.port()) : served);
    const FileDescriptor accepted(::accept(listener.socket.get(), nullptr, nullptr));
    const auto own = client.local();
    const auto interfaceIndex = PacketInfo::ofConnection(accepted.get(), served)->interfaceIndex;
    const SocketPath path{Transport::tcp, own, served, interfaceIndex};
    EXPECT_EQ(inode(table_.exact(path)), client.inode()) << host << isBoundToDevice;
    EXPECT_FALSE(table_.exact({Transport::tcp, served, address(host, 9), 1})) << "listens";
    client.socket = FileDescriptor();
    EXPECT_EQ(inode(table_.exact(path)), 0U) << "closed, and still known to the kernel";
  }
}

}  // namespace platform::test
