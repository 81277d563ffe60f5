#include "platform/udp/UDPSocket.h"

#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "platform/udp/PacketInfo.h"
#include "platform/udp/SocketOption.h"

namespace platform {

namespace {

void enlargeReceiveBuffer(int socket, int size) {
  // The first is for privileged processes and goes beyond the system's limit.
  if (setOption(socket, SOL_SOCKET, SO_RCVBUFFORCE, size)) {
    setOption(socket, SOL_SOCKET, SO_RCVBUF, size);
  }
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
    error = ErrorQueue::request(socket, isIPv6);
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

UDPSocket::Sent sendMessages(int socket, std::span<mmsghdr> messages) {
  const auto size = static_cast<unsigned>(messages.size());
  int count = 0;
  const auto error = uninterrupted([&] {
    return count = ::sendmmsg(socket, messages.data(), size, MSG_DONTWAIT | MSG_NOSIGNAL);
  });
  return {error ? 0 : static_cast<std::size_t>(count), error};
}

iovec rangeOf(DataView bytes) { return {const_cast<std::uint8_t*>(bytes.data()), bytes.size()}; }

/// What `sendmsg` takes of a datagram besides its bytes; the message points into it.
class Outgoing {
 public:
  Outgoing(const DatagramPath& path, DataView bytes) : path_(path), range_(rangeOf(bytes)) {}

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

UDPSocket::Sent UDPSocket::sendTogether(std::span<const DataView> datagrams) {
  std::array<iovec, kMaxTogether> ranges;
  std::array<mmsghdr, kMaxTogether> messages{};
  const auto count = std::min(datagrams.size(), kMaxTogether);
  for (std::size_t i = 0; i < count; ++i) {
    ranges[i] = rangeOf(datagrams[i]);
    messages[i].msg_hdr.msg_iov = &ranges[i];
    messages[i].msg_hdr.msg_iovlen = 1;
  }
  return sendMessages(get(), std::span(messages).first(count));
}

UDPSocket::Sent UDPSocket::sendTogether(std::span<const Answer> answers) {
  std::vector<Outgoing> outgoing;
  std::vector<mmsghdr> messages;
  const auto first = answers.first(std::min(answers.size(), kMaxTogether));
  outgoing.reserve(first.size());  // stay where they are
  messages.reserve(first.size());
  for (const auto& [path, bytes] : first) {
    messages.push_back({outgoing.emplace_back(path, bytes).message(address_.isWildcard()), 0});
  }
  return sendMessages(get(), messages);
}

void UDPSocket::sendAll(std::span<const Answer> answers) {
  while (!answers.empty()) {
    const auto [count, error] = sendTogether(answers);
    answers = answers.subspan(error ? 1 : count);
  }
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
