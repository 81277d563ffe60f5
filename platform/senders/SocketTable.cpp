#include "platform/senders/SocketTable.h"

#include <algorithm>
#include <utility>

#include "platform/base/Clock.h"
#include "platform/log/NSLog.h"
#include "platform/udp/NetworkInterface.h"
#include "platform/udp/OwnSockets.h"

namespace platform {

using socket_diagnosis::Answer;

namespace {

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
  return ownerIn(ask(requestFor(plain, socket_.nextSequence()), /*isList=*/false), plain);
}

std::vector<std::optional<SocketOwner>> SocketTable::exact(std::span<const SocketPath> paths) {
  std::vector<std::optional<SocketOwner>> owners;
  owners.reserve(paths.size());
  while (!paths.empty()) {
    const auto answers =
        askTogether(paths.first(std::min(paths.size(), DiagnosisSocket::kMaxTogether)));
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
  if (paths.size() < 2 || !isThere(paths.front().transport)) {
    return {};
  }
  Data requests;
  for (const auto& path : paths) {
    const auto request = requestFor(plainOf(path), socket_.nextSequence());
    requests.insert(requests.end(), request.begin(), request.end());
  }
  return socket_.askTogether(requests, paths.size());
}

std::optional<SocketOwner> SocketTable::byPort(const SocketAddress& sender) {
  const auto client = sender.unmapped();
  std::optional<SocketOwner> unbound;
  if (!isThere(Transport::udp)) {
    return unbound;
  }
  for (const auto family : {sa_family_t{AF_INET}, sa_family_t{AF_INET6}}) {
    const auto request = socket_diagnosis::portRequest(Transport::udp, family, client.port(),
                                                       socket_.nextSequence());
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
  const auto list = socket_.ask(
      socket_diagnosis::portRequest(transport, AF_INET, kDiscard, socket_.nextSequence()),
      /*isList=*/true);
  interface.isThere = list || !isAbsence(list.error());
  if (!interface.isThere) {
    interface.pausedUntil = now + kPause;
    logNewError(list.error());
  }
  return interface.isThere;
}

std::vector<DiagnosedSocket> SocketTable::ask(const Data& request, bool isList) {
  auto found = socket_.ask(request, isList);
  logNewError(found || isAbsence(found.error()) ? std::error_code() : found.error());
  return found ? *std::move(found) : std::vector<DiagnosedSocket>();
}

void SocketTable::logNewError(std::error_code error) {
  if (std::exchange(error_, error) != error && error) {
    NSLog("SocketTable: the kernel does not tell whose sockets are: ", error.message());
  }
}

}  // namespace platform
