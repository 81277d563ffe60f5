#include "platform/network/UDPListenerSocket.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <time.h>

// The first needs the two above.
#include <linux/errqueue.h>
#include <linux/sock_diag.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/network/PacketInfo.h"

namespace platform {

namespace {

// Larger than any datagram.
constexpr std::size_t kBufferSize = 64UL * 1024;

// What the kernel holds while the owner's queue is busy, which takes it twice: some hundred
// datagrams, so that what waits is dealt with in seconds.
constexpr int kReceiveBufferSize = 256 * 1024;

// Room for all that the kernel says of a datagram.
constexpr std::size_t kControlSize = 512;

// Refusals that one read may find before it: one for each earlier datagram.
constexpr int kMaxAttempts = 64;

bool setOption(int socket, int level, int name, int value) {
  return ::setsockopt(socket, level, name, &value, sizeof value) == 0;
}

void enlargeReceiveBuffer(int socket) {
  // The first is for privileged processes and goes beyond the system's limit.
  if (!setOption(socket, SOL_SOCKET, SO_RCVBUFFORCE, kReceiveBufferSize)) {
    setOption(socket, SOL_SOCKET, SO_RCVBUF, kReceiveBufferSize);
  }
}

SocketAddress anyAddress(bool isIPv6, std::uint16_t port) {
  return SocketAddress::parse(isIPv6 ? "::" : "0.0.0.0", port).value();
}

/// The IPv4 options go for IPv4 clients of an IPv6 socket.
bool prepare(int socket, bool isIPv6, std::uint16_t port) {
  enlargeReceiveBuffer(socket);
  const auto address = anyAddress(isIPv6, port);
  return (!isIPv6 || (setOption(socket, IPPROTO_IPV6, IPV6_V6ONLY, 0) &&
                      setOption(socket, IPPROTO_IPV6, IPV6_RECVERR, 1))) &&
         setOption(socket, IPPROTO_IP, IP_RECVERR, 1) && PacketInfo::request(socket, isIPv6) &&
         ::bind(socket, address.data(), address.size()) == 0;
}

tl::expected<FileDescriptor, NWError> openBound(bool isIPv6, std::uint16_t port) {
  const int family = isIPv6 ? AF_INET6 : AF_INET;
  FileDescriptor socket(::socket(family, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!socket.isOpen() || !prepare(socket.get(), isIPv6, port)) {
    return tl::unexpected(NWError::posix(errno));
  }
  return socket;
}

std::uint16_t boundPort(int socket) {
  SocketAddress address;
  socklen_t size = SocketAddress::kMaxSize;
  return ::getsockname(socket, address.data(), &size) == 0 ? address.port() : std::uint16_t{0};
}

/// The error of one attempt; 0 for none.
int sendOnce(int socket, const msghdr& message) {
  while (::sendmsg(socket, &message, MSG_DONTWAIT | MSG_NOSIGNAL) < 0) {
    if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

std::optional<int> errorIn(msghdr& message) {
  for (auto* control = CMSG_FIRSTHDR(&message); control != nullptr;
       control = CMSG_NXTHDR(&message, control)) {
    const bool isIPv4 = control->cmsg_level == IPPROTO_IP && control->cmsg_type == IP_RECVERR;
    const bool isIPv6 = control->cmsg_level == IPPROTO_IPV6 && control->cmsg_type == IPV6_RECVERR;
    if (isIPv4 || isIPv6) {
      sock_extended_err error{};
      std::memcpy(&error, CMSG_DATA(control), sizeof error);
      return static_cast<int>(error.ee_errno);
    }
  }
  return std::nullopt;
}

}  // namespace

tl::expected<UDPListenerSocket, NWError> UDPListenerSocket::bind(std::uint16_t port) {
  bool isIPv6 = true;
  auto socket = openBound(isIPv6, port);
  if (!socket && socket.error() == NWError::posix(EAFNOSUPPORT)) {
    isIPv6 = false;
    socket = openBound(isIPv6, port);
  }
  if (!socket) {
    return tl::unexpected(socket.error());
  }
  return UDPListenerSocket(*std::move(socket), isIPv6);
}

UDPListenerSocket::UDPListenerSocket(FileDescriptor socket, bool isIPv6)
    : socket_(std::move(socket)),
      isIPv6_(isIPv6),
      port_(boundPort(socket_.get())),
      buffer_(kBufferSize) {
  served_.push_back(OwnSockets::shared().serve(anyAddress(false, port_)));
  if (isIPv6_) {
    served_.push_back(OwnSockets::shared().serve(anyAddress(true, port_)));
  }
}

void UDPListenerSocket::close() {
  served_.clear();
  socket_ = FileDescriptor();
}

std::optional<UDPListenerSocket::Arrival> UDPListenerSocket::receive() {
  Arrival arrival;
  iovec range{buffer_.data(), buffer_.size()};
  msghdr message{};
  alignas(cmsghdr) std::array<unsigned char, kControlSize> control{};
  for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
    message = {arrival.client.data(), SocketAddress::kMaxSize, &range, 1,
               control.data(),        control.size(),          0};
    const auto size = ::recvmsg(socket_.get(), &message, MSG_DONTWAIT);
    if (size >= 0) {
      arrival.asked = PacketInfo::sentTo(message, port_).value_or(anyAddress(isIPv6_, port_));
      arrival.datagram = DataView(buffer_).first(static_cast<std::size_t>(size));
      return arrival;
    }
    if (errno == EAGAIN) {
      break;
    }
  }
  return std::nullopt;
}

std::uint32_t UDPListenerSocket::takeLost() {
  std::array<std::uint32_t, SK_MEMINFO_VARS> counts{};
  socklen_t size = sizeof counts;
  if (::getsockopt(socket_.get(), SOL_SOCKET, SO_MEMINFO, counts.data(), &size) != 0) {
    return 0;
  }
  return counts[SK_MEMINFO_DROPS] - std::exchange(lost_, counts[SK_MEMINFO_DROPS]);
}

std::optional<UDPListenerSocket::Refusal> UDPListenerSocket::takeRefusal() {
  SocketAddress client;
  alignas(cmsghdr) std::array<unsigned char, kControlSize> control{};
  msghdr message{client.data(),  SocketAddress::kMaxSize, nullptr, 0,
                 control.data(), control.size(),          0};
  if (::recvmsg(socket_.get(), &message, MSG_ERRQUEUE | MSG_DONTWAIT) < 0) {
    return std::nullopt;
  }
  return Refusal{client, NWError::posix(errorIn(message).value_or(EIO))};
}

std::optional<NWError> UDPListenerSocket::send(const SocketAddress& from, const SocketAddress& to,
                                               DataView datagram) {
  auto client = to;
  iovec range{const_cast<std::uint8_t*>(datagram.data()), datagram.size()};
  msghdr message{client.data(), client.size(), &range, 1, nullptr, 0, 0};
  PacketInfo source;
  if (!from.isWildcard()) {
    source.sendFrom(message, from);
  }
  int error = sendOnce(socket_.get(), message);
  if (error != 0 && error != EAGAIN) {
    error = sendOnce(socket_.get(), message);  // the first may have been about an earlier one
  }
  return error == 0 ? std::nullopt : std::optional(NWError::posix(error));
}

}  // namespace platform
