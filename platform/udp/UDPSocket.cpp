#include "platform/udp/UDPSocket.h"

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
#include <vector>

#include "platform/udp/PacketInfo.h"
#include "platform/udp/SocketOption.h"

namespace platform {

namespace {

// Room for all that the kernel says of a refusal.
constexpr std::size_t kControlSize = 512;

void enlargeReceiveBuffer(int socket, int size) {
  // The first is for privileged processes and goes beyond the system's limit.
  if (setOption(socket, SOL_SOCKET, SO_RCVBUFFORCE, size)) {
    setOption(socket, SOL_SOCKET, SO_RCVBUF, size);
  }
}

/// The IPv4 option goes for IPv4 clients of an IPv6 socket too.
std::error_code keepRefusals(int socket, bool isIPv6) {
  const auto error = isIPv6 ? setOption(socket, IPPROTO_IPV6, IPV6_RECVERR, 1) : std::error_code();
  return error ? error : setOption(socket, IPPROTO_IP, IP_RECVERR, 1);
}

/// Everything but the address, which is to be bound next.
std::error_code prepare(int socket, const SocketAddress& address,
                        const UDPSocket::Binding& binding) {
  const bool isIPv6 = address.isIPv6();
  std::error_code error;
  enlargeReceiveBuffer(socket, binding.receiveBuffer);
  if (isIPv6) {
    error = setOption(socket, IPPROTO_IPV6, IPV6_V6ONLY, binding.takesIPv4 ? 0 : 1);
  }
  if (!error && binding.keepsRefusals) {
    error = keepRefusals(socket, isIPv6);
  }
  return !error && (address.isWildcard() || binding.tellsInterface)
             ? PacketInfo::request(socket, isIPv6)
             : error;
}

/// The error of `call` made until no signal interrupts it.
template <class Call>
std::error_code uninterrupted(const Call& call) {
  std::error_code error;
  do {
    error = errorOf(call());
  } while (error == std::errc::interrupted);
  return error;
}

/// What `sendmsg` takes of a datagram besides its bytes; the message points into it.
class Outgoing {
 public:
  Outgoing(const DatagramPath& path, DataView bytes)
      : path_(path), range_{const_cast<std::uint8_t*>(bytes.data()), bytes.size()} {}

  /// Where `withSource`, it leaves from the destination of the path.
  msghdr message(bool withSource) {
    auto& client = path_.client;
    msghdr message{client.data(), client.size(), &range_, 1, nullptr, 0, 0};
    if (withSource && !path_.destination.isWildcard()) {
      source_.sendFrom(message, path_.destination);
    }
    return message;
  }

 private:
  DatagramPath path_;
  iovec range_;
  PacketInfo source_;
};

std::error_code errorIn(msghdr& message) {
  for (auto* control = CMSG_FIRSTHDR(&message); control != nullptr;
       control = CMSG_NXTHDR(&message, control)) {
    const bool isIPv4 = control->cmsg_level == IPPROTO_IP && control->cmsg_type == IP_RECVERR;
    const bool isIPv6 = control->cmsg_level == IPPROTO_IPV6 && control->cmsg_type == IPV6_RECVERR;
    if (isIPv4 || isIPv6) {
      sock_extended_err error{};
      std::memcpy(&error, CMSG_DATA(control), sizeof error);
      return systemError(static_cast<int>(error.ee_errno));
    }
  }
  return std::make_error_code(std::errc::io_error);
}

}  // namespace

std::error_code UDPSocket::open(sa_family_t family) {
  FileDescriptor socket(::socket(family, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!socket.isOpen()) {
    return lastError();
  }
  socket_.open(std::move(socket));
  return {};
}

std::error_code UDPSocket::connect(const SocketAddress& peer) {
  auto error = errorOf(::connect(get(), peer.data(), peer.size()));
  if (!error) {
    error = address_.readOwnSideOf(get());
  }
  if (!error) {
    own_.emplace(address_, OwnSockets::Use::exchange);
  }
  return error;
}

std::error_code UDPSocket::bind(const SocketAddress& address, const Binding& binding) {
  auto error = open(address.family());
  if (!error) {
    error = prepare(get(), address, binding);
  }
  if (!error) {
    error = errorOf(::bind(get(), address.data(), address.size()));
  }
  if (!error) {
    error = address_.readOwnSideOf(get());
  }
  if (error) {
    close();
  } else {
    tellsInterface_ = binding.tellsInterface;
    serve(binding.takesIPv4);
  }
  return error;
}

void UDPSocket::serve(bool takesIPv4) {
  own_.emplace(address_, OwnSockets::Use::serving);
  if (takesIPv4 && address_.isIPv6()) {
    const auto any = SocketAddress::parse("0.0.0.0", address_.port()).value();
    ownIPv4_.emplace(any, OwnSockets::Use::serving);
  }
}

void UDPSocket::close() {
  socket_.close();
  own_.reset();
  ownIPv4_.reset();
}

std::error_code UDPSocket::send(DataView datagram) {
  return uninterrupted(
      [&] { return ::send(get(), datagram.data(), datagram.size(), MSG_DONTWAIT | MSG_NOSIGNAL); });
}

tl::expected<std::size_t, std::error_code> UDPSocket::receive(std::span<std::uint8_t> room) {
  ssize_t size = 0;
  const auto error = uninterrupted(
      [&] { return size = ::recv(get(), room.data(), room.size(), MSG_DONTWAIT | MSG_TRUNC); });
  if (error) {
    return tl::make_unexpected(error);
  }
  return static_cast<std::size_t>(size);
}

void UDPSocket::dropRefusal() { takeError(get()); }

std::error_code UDPSocket::send(const DatagramPath& path, DataView datagram) {
  Outgoing outgoing(path, datagram);
  const auto message = outgoing.message(address_.isWildcard());
  return uninterrupted([&] { return ::sendmsg(get(), &message, MSG_DONTWAIT | MSG_NOSIGNAL); });
}

void UDPSocket::sendAll(std::span<const Answer> answers) {
  std::vector<Outgoing> outgoing;
  std::vector<mmsghdr> messages;
  outgoing.reserve(answers.size());  // stay where they are
  messages.reserve(answers.size());
  for (const auto& [path, bytes] : answers) {
    messages.push_back({outgoing.emplace_back(path, bytes).message(address_.isWildcard()), 0});
  }
  std::span<mmsghdr> left = messages;
  while (!left.empty()) {
    int count = 0;
    const auto error = uninterrupted([&] {
      const auto size = static_cast<unsigned>(left.size());
      return count = ::sendmmsg(get(), left.data(), size, MSG_DONTWAIT | MSG_NOSIGNAL);
    });
    // An error belongs to the first datagram that is left; the others still get their turn.
    left = left.subspan(error ? 1 : static_cast<std::size_t>(count));
  }
}

std::optional<UDPSocket::Refusal> UDPSocket::takeRefusal() {
  SocketAddress client;
  alignas(cmsghdr) std::array<unsigned char, kControlSize> control{};
  msghdr message{client.data(),  SocketAddress::kMaxSize, nullptr, 0,
                 control.data(), control.size(),          0};
  if (::recvmsg(get(), &message, MSG_ERRQUEUE | MSG_DONTWAIT) < 0) {
    return std::nullopt;
  }
  return Refusal{client, errorIn(message)};
}

std::uint32_t UDPSocket::takeLost() {
  std::array<std::uint32_t, SK_MEMINFO_VARS> counts{};
  socklen_t size = sizeof counts;
  if (::getsockopt(get(), SOL_SOCKET, SO_MEMINFO, counts.data(), &size) != 0) {
    return 0;
  }
  return counts[SK_MEMINFO_DROPS] - std::exchange(lost_, counts[SK_MEMINFO_DROPS]);
}

}  // namespace platform
