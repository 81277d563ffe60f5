#include <gmock/gmock.h>
#include <poll.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "platform/base/Clock.h"
#include "platform/senders/SocketTable.h"
#include "platform/udp/PacketInfo.h"
#include "platform/udp/UDPSocket.h"
#include "tests/platform/UDPSocket.h"
#include "tests/support/NetworkNamespace.h"

namespace platform {
namespace {

using quillet::test::NetworkNamespace;

std::uint32_t inodeOf(int socket) {
  struct stat state {};
  ::fstat(socket, &state);
  return static_cast<std::uint32_t>(state.st_ino);
}

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

  void bind(const SocketAddress& to) const {
    ASSERT_EQ(::bind(socket.get(), to.data(), to.size()), 0) << std::strerror(errno);
  }
  void connect(const SocketAddress& to) const {
    ASSERT_EQ(::connect(socket.get(), to.data(), to.size()), 0) << std::strerror(errno);
  }
  void send(const SocketAddress& to) const {
    ASSERT_EQ(::sendto(socket.get(), "q", 1, 0, to.data(), to.size()), 1) << std::strerror(errno);
  }
  void set(int level, int option, int value = 1) const {
    ASSERT_EQ(::setsockopt(socket.get(), level, option, &value, sizeof value), 0);
  }
  void bindToDevice(const char* name) const {
    ASSERT_EQ(::setsockopt(socket.get(), SOL_SOCKET, SO_BINDTODEVICE, name,
                           static_cast<socklen_t>(std::strlen(name))),
              0);
  }
  [[nodiscard]] SocketAddress local() const {
    SocketAddress own;
    socklen_t size = SocketAddress::kMaxSize;
    ::getsockname(socket.get(), own.data(), &size);
    return own;
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
  /// The kernel makes an IPv6 address usable in its own time.
  void waitUntilReached(const std::string& host) {
    serve("::");
    const Client probe(AF_INET6);
    probe.bindToDevice("quillet0");
    const auto to = at(host);
    const auto givenUp = Clock::system().uptimeNanoseconds() + 10'000'000'000;
    while (server_.receive(slots_).value().empty()) {
      ASSERT_LT(Clock::system().uptimeNanoseconds(), givenUp);
      ::sendto(probe.socket.get(), "q", 1, 0, to.data(), to.size());
    }
    server_.close();
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

  UDPSocket server_;
  DatagramSlots slots_;
  SocketTable table_;
};

TEST_F(SocketTableTest, FindsTheSocketThatHasSent) {
  const auto network = NetworkNamespace::enter();
  if (!network || !NetworkNamespace::ip("link add quillet0 type veth peer name quillet1") ||
      !NetworkNamespace::ip("address add 192.0.2.9/24 dev quillet0") ||
      !NetworkNamespace::ip("address add 2001:db8::9/64 dev quillet0 nodad") ||
      !NetworkNamespace::ip("link set quillet0 up") ||
      !NetworkNamespace::ip("link set quillet1 up")) {
    GTEST_SKIP() << "no network namespace";
  }
  waitUntilReached("2001:db8::9");
  struct Row {
    const char* served;
    const char* asked;
    sa_family_t family;
    const char* boundTo;
    const char* device;
    bool isConnected;
  };
  const Row rows[] = {
      {"127.0.0.1", "127.0.0.1", AF_INET, nullptr, nullptr, false},
      {"127.0.0.1", "127.0.0.1", AF_INET, nullptr, nullptr, true},
      {"127.0.0.1", "127.0.0.1", AF_INET, "127.0.0.7", nullptr, false},
      {"127.0.0.1", "127.0.0.1", AF_INET6, nullptr, nullptr, false},
      {"127.0.0.1", "127.0.0.1", AF_INET6, nullptr, nullptr, true},
      {"0.0.0.0", "127.0.0.5", AF_INET, nullptr, nullptr, true},
      {"0.0.0.0", "192.0.2.9", AF_INET, nullptr, nullptr, false},
      {"0.0.0.0", "192.0.2.9", AF_INET, nullptr, "quillet0", false},
      {"192.0.2.9", "192.0.2.9", AF_INET, nullptr, "quillet0", true},
      {"127.0.0.1", "127.0.0.1", AF_INET, nullptr, "lo", false},
      {"::1", "::1", AF_INET6, nullptr, nullptr, false},
      {"::1", "::1", AF_INET6, "::1", nullptr, true},
      {"::", "2001:db8::9", AF_INET6, nullptr, "quillet0", false},
      {"2001:db8::9", "2001:db8::9", AF_INET6, nullptr, "quillet0", true},
  };
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    const auto& [served, asked, family, boundTo, device, isConnected] = rows[i];
    serve(served);
    const Client client(family);
    if (boundTo != nullptr) {
      client.bind(address(boundTo, 0));
    }
    if (device != nullptr) {
      client.bindToDevice(device);
    }
    const bool isMapped = family == AF_INET6 && at(asked).family() == AF_INET;
    const auto to = isMapped ? mapped(asked, at(asked).port()) : at(asked);
    if (isConnected) {
      client.connect(to);
    }
    client.send(to);
    EXPECT_EQ(sender(), inodeOf(client.socket.get())) << "row " << i;
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
  only6.set(IPPROTO_IPV6, IPV6_V6ONLY);
  only6.bind(address("::", port));
  EXPECT_FALSE(table_.exact(path));
  EXPECT_FALSE(table_.byPort(path.client));
  // A machine of the network, and a socket of ours that is bound to no address.
  const Client unbound(AF_INET);
  unbound.bind(address("0.0.0.0", 0));
  EXPECT_FALSE(table_.exact(
      {Transport::udp, address("192.0.2.77", unbound.local().port()), at("127.0.0.1"), 1}));
  EXPECT_FALSE(table_.byPort(address("192.0.2.77", unbound.local().port())));
}

// The kernel's lookup in the order in which the datagram went would find the server.
TEST_F(SocketTableTest, NeverTakesOurOwnSocket) {
  serve("0.0.0.0");
  const auto gone = address("127.0.0.1", test::unusedPort());
  EXPECT_FALSE(table_.exact({Transport::udp, gone, at("127.0.0.1"), 1}));
  EXPECT_FALSE(table_.byPort(at("127.0.0.1")));
  UDPSocket own;
  ASSERT_FALSE(own.open(AF_INET));
  ASSERT_FALSE(own.connect(at("127.0.0.1")));
  EXPECT_FALSE(table_.byPort(own.address()));
}

TEST_F(SocketTableTest, TwinsOfOneAddressAreEither) {
  serve("127.0.0.1");
  const Client twins[] = {Client(AF_INET), Client(AF_INET)};
  for (const auto& twin : twins) {
    twin.set(SOL_SOCKET, SO_REUSEPORT);
  }
  twins[0].bind(address("127.0.0.1", 0));
  twins[1].bind(twins[0].local());
  twins[1].send(at("127.0.0.1"));
  EXPECT_THAT(sender(),
              testing::AnyOf(inodeOf(twins[0].socket.get()), inodeOf(twins[1].socket.get())));
}

TEST_F(SocketTableTest, FindsByItsPortWhoHasSentElsewhere) {
  serve("127.0.0.1");
  for (const sa_family_t family : {sa_family_t{AF_INET}, sa_family_t{AF_INET6}}) {
    const Client unbound(family);
    unbound.bind(address(family == AF_INET ? "0.0.0.0" : "::", 0));
    const auto client = address("127.0.0.1", unbound.local().port());
    EXPECT_EQ(inode(table_.byPort(client)), inodeOf(unbound.socket.get()));
  }
  const Client connected(AF_INET);
  connected.connect(address("127.0.0.3", 9));
  EXPECT_FALSE(table_.exact({Transport::udp, connected.local(), at("127.0.0.1"), 1}));
  EXPECT_EQ(inode(table_.byPort(connected.local())), inodeOf(connected.socket.get()));
  EXPECT_EQ(inode(table_.exact({Transport::udp, connected.local(), address("127.0.0.3", 9), 1})),
            inodeOf(connected.socket.get()));
}

TEST_F(SocketTableTest, FindsTheClientsEndOfAConnection) {
  struct Row {
    const char* served;
    bool isMapped;
    bool isBoundToDevice;
  };
  const Row rows[] = {
      {"127.0.0.1", false, false}, {"127.0.0.1", true, false}, {"127.0.0.1", false, true},
      {"::1", false, false},       {"::1", false, true},
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
    EXPECT_EQ(inode(table_.exact(path)), inodeOf(client.socket.get())) << host << isBoundToDevice;
    EXPECT_FALSE(table_.exact({Transport::tcp, served, address(host, 9), 1})) << "listens";
    client.socket = FileDescriptor();
    EXPECT_EQ(inode(table_.exact(path)), 0U) << "closed, and still known to the kernel";
  }
}

}  // namespace
}  // namespace platform
