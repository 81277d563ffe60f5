#include "programs/quillet_demo_filter/DatagramSocket.h"

#include <netinet/in.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <span>
#include <system_error>
#include <utility>

namespace quillet {

namespace {

// Room for a burst while the process does not run; the system may grant less.
constexpr int kReceiveBufferSize = 4 << 20;

void setOption(int descriptor, int level, int name, int value) {
  // A socket without the option still serves.
  static_cast<void>(::setsockopt(descriptor, level, name, &value, sizeof value));
}

std::uint16_t boundPort(int descriptor) {
  sockaddr_storage storage{};
  socklen_t length = sizeof storage;
  ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&storage), &length);
  // The port stands at the same place in the addresses of both families.
  sockaddr_in address{};
  std::memcpy(&address, &storage, sizeof address);
  return ntohs(address.sin_port);
}

msghdr headerOf(sockaddr_storage& peer, socklen_t peerLength, iovec& piece, platform::Data& bytes) {
  piece = {bytes.data(), bytes.size()};
  msghdr header{};
  header.msg_name = &peer;
  header.msg_namelen = peerLength;
  header.msg_iov = &piece;
  header.msg_iovlen = 1;
  return header;
}

void sendAll(int descriptor, std::span<mmsghdr> datagrams) {
  while (!datagrams.empty()) {
    const auto left = static_cast<unsigned>(datagrams.size());
    const int count = ::sendmmsg(descriptor, datagrams.data(), left, 0);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    // An error belongs to the first datagram that is left; the others still get their turn.
    datagrams = datagrams.subspan(count > 0 ? static_cast<std::size_t>(count) : 1);
  }
}

}  // namespace

DatagramSocket::DatagramSocket(const ListenAddress& address)
    : address_(address),
      descriptor_(::socket(address.isIPv6 ? AF_INET6 : AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)),
      slots_(kBatchSize) {
  if (address.isIPv6) {
    setOption(descriptor(), IPPROTO_IPV6, IPV6_V6ONLY, 1);
  }
  setOption(descriptor(), SOL_SOCKET, SO_RCVBUF, kReceiveBufferSize);
  sockaddr_storage storage{};
  const socklen_t length = address.toSockaddr(storage);
  if (::bind(descriptor(), reinterpret_cast<const sockaddr*>(&storage), length) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
  address_.port = boundPort(descriptor());
}

std::vector<platform::DataView> DatagramSocket::receive() {
  std::array<iovec, kBatchSize> pieces{};
  std::array<mmsghdr, kBatchSize> headers{};
  for (std::size_t i = 0; i < kBatchSize; ++i) {
    Slot& slot = slots_[i];
    slot.answer.reset();
    headers[i].msg_hdr = headerOf(slot.peer, sizeof slot.peer, pieces[i], slot.query);
  }
  const int count = ::recvmmsg(descriptor(), headers.data(), kBatchSize, MSG_DONTWAIT, nullptr);
  std::vector<platform::DataView> datagrams;
  for (std::size_t i = 0; count > 0 && i < static_cast<std::size_t>(count); ++i) {
    slots_[i].peerLength = headers[i].msg_hdr.msg_namelen;
    datagrams.emplace_back(slots_[i].query.data(), headers[i].msg_len);
  }
  return datagrams;
}

void DatagramSocket::answer(std::size_t index, platform::Data bytes) {
  slots_.at(index).answer = std::move(bytes);
}

void DatagramSocket::flush() {
  std::array<iovec, kBatchSize> pieces{};
  std::array<mmsghdr, kBatchSize> headers{};
  std::size_t count = 0;
  for (Slot& slot : slots_) {
    if (slot.answer) {
      headers[count].msg_hdr = headerOf(slot.peer, slot.peerLength, pieces[count], *slot.answer);
      ++count;
    }
  }
  sendAll(descriptor(), std::span(headers).first(count));
}

}  // namespace quillet
