#include "platform/senders/SocketTable.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "platform/base/Clock.h"
#include "platform/base/SystemError.h"
#include "platform/log/NSLog.h"
#include "platform/udp/NetworkInterface.h"
#include "platform/udp/OwnSockets.h"

namespace platform {

using socket_diagnosis::Answer;

namespace {

// The kernel fills no more at a time.
constexpr std::size_t kRoom = 32UL * 1024;
// An exact answer has some 200 octets.
constexpr std::size_t kRoomOfOne = 512;
constexpr std::size_t kMaxTogether = kRoom / kRoomOfOne;
// Reads for one request; a list has some 200 sockets in each, an exact answer takes one.
constexpr int kMaxReads = 64;

bool isAbsence(std::error_code error) { return error == std::errc::no_such_file_or_directory; }

bool isSameHost(SocketAddress one, SocketAddress other) {
  for (auto* const address : {&one, &other}) {
    address->setPort(0);
    if (address->isIPv6()) {
      address->v6().sin6_scope_id = 0;
    }
  }
  return one == other;
}

bool isSameEnd(const SocketAddress& one, const SocketAddress& other) {
  return one.port() == other.port() && isSameHost(one, other);
}

/// At once, other than `NetworkInterface::isOfThisMachine`, for what most clients send from.
bool isLoopback(const SocketAddress& address) {
  constexpr std::uint32_t kLoopback = INADDR_LOOPBACK >> IN_CLASSA_NSHIFT;
  return address.isIPv6() ? IN6_IS_ADDR_LOOPBACK(&address.v6().sin6_addr) != 0
                          : ntohl(address.v4().sin_addr.s_addr) >> IN_CLASSA_NSHIFT == kLoopback;
}

/// Whether a socket with that local address may have sent from `client`. One that is bound to no
/// address looks as if it had sent what came from its port of another machine.
bool canSendFrom(const DiagnosedSocket& socket, const SocketAddress& client) {
  const auto& local = socket.local;
  if (!local.isWildcard()) {
    return isSameEnd(local, client);
  }
  const bool hasFamily =
      local.family() == client.family() || (local.isIPv6() && !socket.isIPv6Only);
  return local.port() == client.port() && hasFamily &&
         (isLoopback(client) || NetworkInterface::isOfThisMachine(client));
}

// Our own listening or accepted socket has another local end than the client.
bool isClientsEnd(const DiagnosedSocket& socket, const SocketPath& path) {
  const bool isConnected = socket.remote.port() != 0;
  return !socket.isListening && canSendFrom(socket, path.client) &&
         (!isConnected || isSameEnd(socket.remote, path.destination)) &&
         (socket.owner.inode != 0 || socket.owner.cgroup);
}

SocketPath plainOf(const SocketPath& path) {
  return {path.transport, path.client.unmapped(), path.destination.unmapped(), path.interfaceIndex};
}

Data requestFor(const SocketPath& plain, std::uint32_t sequence) {
  const auto& [transport, client, destination, interfaceIndex] = plain;
  const bool isUDP = transport == Transport::udp;
  return socket_diagnosis::exactRequest({transport, client.family(), isUDP ? destination : client,
                                         isUDP ? client : destination, interfaceIndex},
                                        sequence);
}

std::optional<SocketOwner> ownerIn(const std::vector<DiagnosedSocket>& found,
                                   const SocketPath& plain) {
  return !found.empty() && isClientsEnd(found.front(), plain) ? std::optional(found.front().owner)
                                                              : std::nullopt;
}

}  // namespace

std::optional<SocketOwner> SocketTable::exact(const SocketPath& path) {
  const auto plain = plainOf(path);
  if (!isThere(path.transport)) {
    return std::nullopt;
  }
  return ownerIn(ask(requestFor(plain, ++sequence_), /*isList=*/false), plain);
}

std::vector<std::optional<SocketOwner>> SocketTable::exact(std::span<const SocketPath> paths) {
  std::vector<std::optional<SocketOwner>> owners;
  owners.reserve(paths.size());
  while (!paths.empty()) {
    const auto answers = askTogether(paths.first(std::min(paths.size(), kMaxTogether)));
    for (const auto& answer : answers) {
      owners.push_back(ownerIn(answer.sockets, plainOf(paths.front())));
      paths = paths.subspan(1);
    }
    if (answers.empty()) {
      owners.push_back(exact(paths.front()));
      paths = paths.subspan(1);
    }
  }
  return owners;
}

/// The answers for the first of `paths`. The next one is to be asked for alone, which says why.
std::vector<Answer> SocketTable::askTogether(std::span<const SocketPath> paths) {
  if (paths.size() < 2 || !isThere(paths.front().transport) || open()) {
    return {};
  }
  Data requests;
  const auto first = sequence_ + 1;
  for (const auto& path : paths) {
    const auto request = requestFor(plainOf(path), ++sequence_);
    requests.insert(requests.end(), request.begin(), request.end());
  }
  const bool isSent = mnl_socket_sendto(socket_.get(), requests.data(), requests.size()) >= 0;
  auto answers = isSent ? receiveTogether(paths.size(), first) : std::vector<Answer>();
  if (answers.size() < paths.size()) {
    socket_.reset();  // what is still to come there belongs to nobody
  }
  return answers;
}

std::vector<Answer> SocketTable::receiveTogether(std::size_t count, std::uint32_t sequence) {
  std::array<iovec, kMaxTogether> ranges;
  std::array<mmsghdr, kMaxTogether> messages{};
  for (std::size_t i = 0; i < count; ++i) {
    ranges[i] = {room_.data() + i * kRoomOfOne, kRoomOfOne};
    messages[i].msg_hdr.msg_iov = &ranges[i];
    messages[i].msg_hdr.msg_iovlen = 1;
  }
  const int received = ::recvmmsg(mnl_socket_get_fd(socket_.get()), messages.data(),
                                  static_cast<unsigned>(count), 0, nullptr);
  std::vector<Answer> answers;
  for (std::size_t i = 0; static_cast<int>(i) < received; ++i) {
    const auto piece = DataView(room_).subspan(i * kRoomOfOne, messages[i].msg_len);
    auto answer = socket_diagnosis::read(piece, sequence + static_cast<std::uint32_t>(i));
    const bool isWhole = (messages[i].msg_hdr.msg_flags & MSG_TRUNC) == 0;
    if (!isWhole || (answer.error != ENOENT && answer.sockets.size() != 1)) {
      break;
    }
    answers.push_back(std::move(answer));
  }
  return answers;
}

std::optional<SocketOwner> SocketTable::byPort(const SocketAddress& sender) {
  const auto client = sender.unmapped();
  std::optional<SocketOwner> unbound;
  if (!isThere(Transport::udp)) {
    return unbound;
  }
  for (const auto family : {sa_family_t{AF_INET}, sa_family_t{AF_INET6}}) {
    const auto request =
        socket_diagnosis::portRequest(Transport::udp, family, client.port(), ++sequence_);
    for (const auto& socket : ask(request, /*isList=*/true)) {
      if (!canSendFrom(socket, client) || OwnSockets::shared().hasSent(socket.local)) {
        continue;
      }
      if (!socket.local.isWildcard()) {
        return socket.owner;
      }
      unbound = unbound ? unbound : socket.owner;
    }
  }
  return unbound;
}

// A list that is empty is no error. Any other error will come again, with what is to be asked.
bool SocketTable::isThere(Transport transport) {
  auto& interface = transport == Transport::udp ? udp_ : tcp_;
  const auto now = Clock::shared().uptimeNanoseconds();
  if (interface.isThere || now < interface.pausedUntil) {
    return interface.isThere;
  }
  constexpr std::uint16_t kDiscard = 9;  // nearly always nobody's
  std::vector<DiagnosedSocket> ignored;
  const auto request = socket_diagnosis::portRequest(transport, AF_INET, kDiscard, ++sequence_);
  const auto error = exchange(request, /*isList=*/true, ignored);
  interface.isThere = !isAbsence(error);
  if (error) {
    socket_.reset();
  }
  if (!interface.isThere) {
    interface.pausedUntil = now + kPause;
    logNewError(error);
  }
  return interface.isThere;
}

std::vector<DiagnosedSocket> SocketTable::ask(const Data& request, bool isList) {
  std::vector<DiagnosedSocket> found;
  auto error = exchange(request, isList, found);
  error = isAbsence(error) ? std::error_code() : error;
  logNewError(error);
  if (error) {
    socket_.reset();  // what is still to come there belongs to nobody
    found.clear();
  }
  return found;
}

std::error_code SocketTable::exchange(const Data& request, bool isList,
                                      std::vector<DiagnosedSocket>& found) {
  if (const auto error = open()) {
    return error;
  }
  if (mnl_socket_sendto(socket_.get(), request.data(), request.size()) < 0) {
    return lastError();
  }
  for (int reads = 0; reads < kMaxReads; ++reads) {
    const auto size = mnl_socket_recvfrom(socket_.get(), room_.data(), room_.size());
    if (size < 0) {
      return lastError();
    }
    const auto piece = DataView(room_).first(static_cast<std::size_t>(size));
    const auto [sockets, isComplete, error] = socket_diagnosis::read(piece, sequence_);
    found.insert(found.end(), sockets.begin(), sockets.end());
    if (isComplete || (!isList && !found.empty())) {
      return {error, std::generic_category()};
    }
  }
  return std::make_error_code(std::errc::message_size);
}

// The kernel has answered when it has taken the request, so nothing here waits.
std::error_code SocketTable::open() {
  if (socket_) {
    return {};
  }
  room_.resize(kRoom);
  socket_.reset(mnl_socket_open2(NETLINK_SOCK_DIAG, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (!socket_ || mnl_socket_bind(socket_.get(), 0, MNL_SOCKET_AUTOPID) < 0) {
    const auto error = lastError();
    socket_.reset();
    return error;
  }
  return {};
}

void SocketTable::logNewError(std::error_code error) {
  if (std::exchange(error_, error) != error && error) {
    NSLog("SocketTable: the kernel does not tell whose sockets are: ", error.message());
  }
}

}  // namespace platform
