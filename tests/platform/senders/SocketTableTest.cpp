#include <net/if.h>
#include <poll.h>
#include <sys/stat.h>

#include <cstring>

#include "platform/senders/SocketTable.h"
#include "platform/udp/PacketInfo.h"
#include "platform/udp/UDPSocket.h"
#include "tests/platform/Test.h"
#include "tests/support/NetworkNamespace.h"

namespace platform::test {

/// The IPv6 form of an IPv4 address, which `parse` does not give.
SocketAddress mapped(const SocketAddress& ipv4) {
  auto result = address("::", ipv4.port());
  auto* const octets = result.v6().sin6_addr.s6_addr;
  octets[10] = octets[11] = 0xFF;
  std::memcpy(octets + 12, &ipv4.v4().sin_addr, 4);
  return result;
}

/// A client's socket, bound to a device if there is one.
Socket client(sa_family_t family, const std::string& device = "", int kind = SOCK_DGRAM) {
  Socket result(family, kind);
  std::array<char, IFNAMSIZ> name{};
  device.copy(name.data(), device.size());
  result.set(SOL_SOCKET, SO_BINDTODEVICE, name);
  return result;
}
Socket boundTo(const SocketAddress& own) {
  auto result = client(own.family());
  result.bind(own);
  return result;
}

std::uint32_t inode(const Socket& socket) {
  struct stat state {};
  ::fstat(socket.descriptor(), &state);
  return static_cast<std::uint32_t>(state.st_ino);
}
/// 0 for none.
std::uint32_t inode(const std::optional<SocketOwner>& owner) { return owner ? owner->inode : 0; }

/// Serves as the proxy does, and looks up who has sent.
class SocketTableTest : public testing::Test {
 protected:
  void serve(const std::string& host) {
    ASSERT_FALSE(server_.bind(address(host), {.receiveBuffer = 4096, .tellsInterface = true}));
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
  std::optional<SocketOwner> exact(const SocketAddress& source, const SocketAddress& destination) {
    return table_.exact({Transport::udp, source, destination, 1});
  }

  platform::UDPSocket server_;
  DatagramSlots slots_;
  SocketTable table_;
};

TEST_F(SocketTableTest, FindsTheSocketThatHasSent) {
  const auto network = NetworkNamespace::enter(
      {"link add quillet0 type veth peer name quillet1", "link set quillet0 up",
       "address add 192.0.2.9/24 dev quillet0", "link set quillet1 up"});
  if (!network) {
    GTEST_SKIP() << "no network namespace";
  }
  const std::tuple<const char*, const char*, sa_family_t, const char*, bool> rows[] = {
      {"127.0.0.1", "127.0.0.1", AF_INET, "", false},
      {"127.0.0.1", "127.0.0.1", AF_INET6, "", true},
      {"0.0.0.0", "127.0.0.5", AF_INET, "", true},
      {"0.0.0.0", "192.0.2.9", AF_INET, "quillet0", false},
      {"::1", "::1", AF_INET6, "", false},
      {"::1", "::1", AF_INET6, "lo", true}};
  for (const auto& [served, destination, family, device, isConnected] : rows) {
    serve(served);
    const auto to = at(destination);
    const auto sender = client(family, device);
    const auto address = to.family() == family ? to : mapped(to);
    if (isConnected) {
      sender.connect(address);
    }
    sender.send("q", address);
    EXPECT_EQ(inode(table_.exact(received())), inode(sender)) << destination << family << device;
    server_.close();
  }
}

TEST_F(SocketTableTest, FindsNoSocketThatHasNotSentAndNoneOfOurs) {
  serve("0.0.0.0");
  auto gone = client(AF_INET);
  gone.send("q", at("127.0.0.1"));
  const auto port = gone.port();
  const auto path = received();
  gone.close();
  EXPECT_FALSE(table_.exact(path)) << "closed";
  const auto elsewhere = boundTo(address("127.0.0.2", port));
  const auto only6 = client(AF_INET6);
  only6.set(IPPROTO_IPV6, IPV6_V6ONLY, 1);
  only6.bind(address("::", port));
  EXPECT_FALSE(table_.exact(path));
  EXPECT_FALSE(table_.byPort(path.client));
  // A machine of the network, and a socket of ours that is bound to no address.
  const auto unbound = boundTo(address("0.0.0.0"));
  const auto other = address("192.0.2.77", unbound.port());
  EXPECT_FALSE(exact(other, at("127.0.0.1")));
  EXPECT_FALSE(table_.byPort(other));
  // The kernel's lookup in the order in which the datagram went would find the server.
  EXPECT_FALSE(exact(address("127.0.0.1", unusedPort()), at("127.0.0.1")));
  EXPECT_FALSE(table_.byPort(at("127.0.0.1")));
  platform::UDPSocket own;
  ASSERT_FALSE(own.open(AF_INET));
  ASSERT_FALSE(own.connect(at("127.0.0.1")));
  EXPECT_FALSE(table_.byPort(own.address()));
}

TEST_F(SocketTableTest, FindsThoseOfSeveralAtOnce) {
  serve("127.0.0.1");
  std::vector<Socket> clients;
  std::vector<SocketPath> paths;
  std::vector<std::uint32_t> inodes;
  for (std::size_t i = 0; i < 130; ++i) {
    const auto& sender = clients.emplace_back(client(AF_INET));
    sender.send("q", at("127.0.0.1"));
    paths.push_back(received());
    inodes.push_back(i % 64 == 5 ? 0 : inode(sender));
  }
  for (std::size_t i = 5; i < clients.size(); i += 64) {
    clients[i].close();
  }
  std::vector<std::uint32_t> found;
  for (const auto& owner : table_.exact(paths)) {
    found.push_back(inode(owner));
  }
  EXPECT_EQ(found, inodes);
}

TEST_F(SocketTableTest, FindsByItsPortWhoHasSentElsewhere) {
  serve("127.0.0.1");
  for (const char* const any : {"0.0.0.0", "::"}) {
    const auto unbound = boundTo(address(any));
    EXPECT_EQ(inode(table_.byPort(address("127.0.0.1", unbound.port()))), inode(unbound));
  }
  const auto connected = client(AF_INET);
  const auto to = address("127.0.0.3", 9);
  connected.connect(to);
  EXPECT_FALSE(exact(connected.address(), at("127.0.0.1")));
  EXPECT_EQ(inode(table_.byPort(connected.address())), inode(connected));
  EXPECT_EQ(inode(exact(connected.address(), to)), inode(connected));
}

TEST_F(SocketTableTest, FindsTheClientsEndOfAConnection) {
  const std::tuple<const char*, bool, const char*> rows[] = {
      {"127.0.0.1", true, ""}, {"127.0.0.1", false, "lo"}, {"::1", false, "lo"}};
  for (const auto& [host, isMapped, device] : rows) {
    const TCPServer listener(address(host));
    const auto served = listener.address();
    auto own = client(isMapped ? sa_family_t{AF_INET6} : served.family(), device, SOCK_STREAM);
    own.connect(isMapped ? mapped(served) : served);
    const auto accepted = listener.accept();
    const auto interfaceIndex =
        PacketInfo::ofConnection(accepted.descriptor(), served)->interfaceIndex;
    const SocketPath path{Transport::tcp, own.address(), served, interfaceIndex};
    EXPECT_EQ(inode(table_.exact(path)), inode(own)) << host << device;
    EXPECT_FALSE(table_.exact({Transport::tcp, served, address(host, 9), 1})) << "listens";
    own.close();
    EXPECT_EQ(inode(table_.exact(path)), 0U) << "closed, and still known to the kernel";
  }
}

}  // namespace platform::test
