#include "platform/senders/OriginalDestination.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
// After the C library's headers of the same structures.
#include <linux/netfilter_ipv4.h>
#include <linux/netfilter_ipv6/ip6_tables.h>
#include <linux/netlink.h>

#include <array>
#include <cerrno>

#include "platform/base/Clock.h"
#include "platform/base/SystemError.h"

namespace platform {

namespace {

using Result = OriginalDestination::Result;
using Kind = Result::Kind;

// Of one network namespace, that of the process; readable by everybody.
constexpr char kCountFile[] = "/proc/sys/net/netfilter/nf_conntrack_count";

// Answers to requests that were given up, before the one to this request.
constexpr int kMaxReads = 4;

/// Connection tracking knows no scopes of link-local addresses.
bool isSame(SocketAddress original, const SocketAddress& local) {
  if (original.isIPv6() && local.isIPv6()) {
    original.v6().sin6_scope_id = local.v6().sin6_scope_id;
  }
  return original == local;
}

Result resultFrom(const OriginalAddresses& addresses, const SocketAddress& local) {
  return isSame(addresses.destination, local) ? Result{} : Result{Kind::captured, addresses};
}

}  // namespace

Result OriginalDestination::ofDatagram(const SocketAddress& client, const SocketAddress& local) {
  const auto now = DispatchTime::now().uptimeNanoseconds;
  if (!isTracking(now)) {
    return {};
  }
  if (now < pausedUntil_) {
    return {Kind::cannotTell, {}};
  }
  const auto answer = ask(client.unmapped(), local.unmapped());
  if (answer) {
    return resultFrom(*answer, local.unmapped());
  }
  if (answer.error() == std::errc::no_such_file_or_directory) {
    return {};
  }
  pausedUntil_ = now + kPause;
  socket_ = FileDescriptor();
  return {Kind::cannotTell, {}};
}

Result OriginalDestination::ofConnection(int socket, const SocketAddress& client,
                                         const SocketAddress& local) {
  const auto own = local.unmapped();
  SocketAddress asked;
  socklen_t size = SocketAddress::kMaxSize;
  const int status = own.isIPv6()
                         ? ::getsockopt(socket, SOL_IPV6, IP6T_SO_ORIGINAL_DST, asked.data(), &size)
                         : ::getsockopt(socket, SOL_IP, SO_ORIGINAL_DST, asked.data(), &size);
  if (status == 0) {
    return resultFrom({client.unmapped(), asked}, own);
  }
  // Not tracked, or nothing is.
  const bool isUntracked = errno == ENOENT || errno == ENOPROTOOPT;
  return {isUntracked ? Kind::notCaptured : Kind::cannotTell, {}};
}

/// Without connection tracking the file is not there, or says 0.
bool OriginalDestination::isTracking(std::uint64_t now) {
  if (now < trackingKnownUntil_) {
    return isTracking_;
  }
  trackingKnownUntil_ = now + kUseAge;
  if (!count_.isOpen()) {
    count_ = FileDescriptor(::open(kCountFile, O_RDONLY | O_CLOEXEC));
  }
  char first = '0';
  isTracking_ = count_.isOpen() && ::pread(count_.get(), &first, 1, 0) == 1 && first != '0';
  return isTracking_;
}

OriginalDestination::Answer OriginalDestination::ask(const SocketAddress& client,
                                                     const SocketAddress& local) {
  if (client.family() != local.family()) {
    return tl::unexpected(std::make_error_code(std::errc::address_family_not_supported));
  }
  if (!open()) {
    return tl::unexpected(lastError());
  }
  const auto request = conntrackRequest(client, local, ++sequence_);
  if (::send(socket_.get(), request.data(), request.size(), 0) < 0) {
    return tl::unexpected(lastError());
  }
  return receive();
}

/// The kernel has answered before the send returns.
OriginalDestination::Answer OriginalDestination::receive() {
  alignas(nlmsghdr) std::array<std::uint8_t, 4096> room;
  Answer answer = tl::unexpected(std::make_error_code(std::errc::no_message));
  for (int i = 0; i < kMaxReads && !answer && answer.error() == std::errc::no_message; ++i) {
    const auto size = ::recv(socket_.get(), room.data(), room.size(), 0);
    if (size < 0) {
      return tl::unexpected(lastError());
    }
    answer = readConntrackAnswer({room.data(), static_cast<std::size_t>(size)}, sequence_);
  }
  return answer;
}

/// Connected to the kernel, so that no other process can send to it.
bool OriginalDestination::open() {
  if (socket_.isOpen()) {
    return true;
  }
  FileDescriptor socket(
      ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_NETFILTER));
  sockaddr_nl kernel{};
  kernel.nl_family = AF_NETLINK;
  if (!socket.isOpen() ||
      ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&kernel), sizeof kernel) != 0) {
    return false;
  }
  socket_ = std::move(socket);
  return true;
}

}  // namespace platform
