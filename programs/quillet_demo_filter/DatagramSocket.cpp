#include "programs/quillet_demo_filter/DatagramSocket.h"

#include <netinet/in.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <span>
#include <system_error>
#include <utility>

namespace quillet {

namespace {

constexpr std::size_t kMaxDatagramSize = 65535;
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

std::size_t sendAll(int descriptor, std::span<mmsghdr> datagrams) {
  std::size_t sent = 0;
  while (!datagrams.empty()) {
    const auto left = static_cast<unsigned>(datagrams.size());
    const int count = ::sendmmsg(descriptor, datagrams.data(), left, 0);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    // An error belongs to the first datagram that is left; the others still get their turn.
    const std::size_t taken = count > 0 ? static_cast<std::size_t>(count) : 0;
    sent += taken;
    datagrams = datagrams.subspan(taken > 0 ? taken : 1);
  }
  return sent;
}

}  // namespace

struct DatagramSocket::Slot {
  sockaddr_storage peer{};
  socklen_t peerLength = 0;
  platform::Data query = platform::Data(kMaxDatagramSize);
  std::optional<platform::Data> answer;

  void describe(msghdr& header, iovec& piece, std::span<std::uint8_t> bytes, socklen_t nameLength) {
    piece = {bytes.data(), bytes.size()};
    header.msg_name = &peer;
    header.msg_namelen = nameLength;
    header.msg_iov = &piece;
    header.msg_iovlen = 1;
  }
};

DatagramSocket::DatagramSocket(const ListenAddress& address)
    : address_(address),
      descriptor_(::socket(address.isIPv6 ? AF_INET6 : AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)),
      slots_(kBatchSize) {
  if (address.isIPv6) {
    setOption(descriptor_, IPPROTO_IPV6, IPV6_V6ONLY, 1);
  }
  setOption(descriptor_, SOL_SOCKET, SO_RCVBUF, kReceiveBufferSize);
  sockaddr_storage storage{};
  const socklen_t length = address.toSockaddr(storage);
  if (::bind(descriptor_, reinterpret_cast<const sockaddr*>(&storage), length) != 0) {
    const int error = errno;
    ::close(descriptor_);
    throw std::system_error(error, std::generic_category());
  }
  address_.port = boundPort(descriptor_);
}

DatagramSocket::~DatagramSocket() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

DatagramSocket::DatagramSocket(DatagramSocket&& other) noexcept
    : address_(std::move(other.address_)),
      descriptor_(std::exchange(other.descriptor_, -1)),
      slots_(std::move(other.slots_)) {}

std::vector<platform::DataView> DatagramSocket::receive() {
  std::array<iovec, kBatchSize> pieces{};
  std::array<mmsghdr, kBatchSize> headers{};
  for (std::size_t i = 0; i < kBatchSize; ++i) {
    Slot& slot = slots_[i];
    slot.answer.reset();
    slot.describe(headers[i].msg_hdr, pieces[i], slot.query, sizeof slot.peer);
  }
  const int count = ::recvmmsg(descriptor_, headers.data(), kBatchSize, MSG_DONTWAIT, nullptr);
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

std::size_t DatagramSocket::flush() {
  std::array<iovec, kBatchSize> pieces{};
  std::array<mmsghdr, kBatchSize> headers{};
  std::size_t count = 0;
  for (Slot& slot : slots_) {
    if (slot.answer) {
      slot.describe(headers[count].msg_hdr, pieces[count], *slot.answer, slot.peerLength);
      ++count;
    }
  }
  return sendAll(descriptor_, std::span(headers).first(count));
}

}  // namespace quillet
