#include "platform/udp/ErrorQueue.h"

#include <time.h>

// Needs the one above.
#include <linux/errqueue.h>

#include <array>
#include <cstring>

#include "platform/udp/SocketOption.h"

namespace platform {

namespace {

// Room for all that the kernel says of a refusal.
constexpr std::size_t kControlSize = 512;

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

std::error_code ErrorQueue::request(int socket, bool isIPv6) {
  const auto error = isIPv6 ? setOption(socket, IPPROTO_IPV6, IPV6_RECVERR, 1) : std::error_code();
  return error ? error : setOption(socket, IPPROTO_IP, IP_RECVERR, 1);
}

std::optional<Refusal> ErrorQueue::take(int socket) {
  SocketAddress client;
  alignas(cmsghdr) std::array<unsigned char, kControlSize> control{};
  msghdr message{client.data(),  SocketAddress::kMaxSize, nullptr, 0,
                 control.data(), control.size(),          0};
  if (::recvmsg(socket, &message, MSG_ERRQUEUE | MSG_DONTWAIT) < 0) {
    return std::nullopt;
  }
  return Refusal{client, errorIn(message)};
}

}  // namespace platform
