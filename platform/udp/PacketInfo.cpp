#include "platform/udp/PacketInfo.h"

#include <cstring>

#include "platform/udp/SocketOption.h"

namespace platform {

namespace {

static_assert(sizeof(in6_pktinfo) >= sizeof(in_pktinfo));

bool isMulticast(const in6_addr& address) { return IN6_IS_ADDR_MULTICAST(&address) != 0; }

// Such an address means something on its own network link only.
bool isOfOneLink(const in6_addr& address) {
  return IN6_IS_ADDR_LINKLOCAL(&address) != 0 || isMulticast(address);
}

PacketInfo::Received told(const in_pktinfo& info, std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr = info.ipi_spec_dst;  // one of ours, also when the datagram was a broadcast
  return {SocketAddress(address), static_cast<unsigned>(info.ipi_ifindex)};
}

PacketInfo::Received told(const in6_pktinfo& info, std::uint16_t port) {
  sockaddr_in6 address{};
  address.sin6_family = AF_INET6;
  address.sin6_port = htons(port);
  address.sin6_addr = info.ipi6_addr;
  address.sin6_scope_id = isOfOneLink(info.ipi6_addr) ? info.ipi6_ifindex : 0;
  return {SocketAddress(address), info.ipi6_ifindex};
}

template <class Info>
PacketInfo::Received readInfo(const cmsghdr& control, std::uint16_t port) {
  Info info{};
  std::memcpy(&info, CMSG_DATA(&control), sizeof info);
  return told(info, port);
}

template <class Info>
void writeInfo(msghdr& message, int level, int type, const Info& info) {
  message.msg_controllen = CMSG_SPACE(sizeof info);
  cmsghdr& control = *CMSG_FIRSTHDR(&message);
  control.cmsg_level = level;
  control.cmsg_type = type;
  control.cmsg_len = CMSG_LEN(sizeof info);
  std::memcpy(CMSG_DATA(&control), &info, sizeof info);
}

}  // namespace

std::error_code PacketInfo::request(int socket, bool isIPv6) {
  const auto error =
      isIPv6 ? setOption(socket, IPPROTO_IPV6, IPV6_RECVPKTINFO, 1) : std::error_code();
  return error ? error : setOption(socket, IPPROTO_IP, IP_PKTINFO, 1);
}

void PacketInfo::prepareToReceive(msghdr& message) {
  message.msg_control = bytes_;
  message.msg_controllen = sizeof bytes_;
}

std::optional<PacketInfo::Received> PacketInfo::ofConnection(int socket,
                                                             const SocketAddress& local) {
  constexpr int kIPv6PacketOptions = 6;  // IPV6_2292PKTOPTIONS (RFC 2292, section 4.1)
  const bool isIPv6 = local.isIPv6();
  PacketInfo info;
  msghdr message{};
  info.prepareToReceive(message);
  auto size = static_cast<socklen_t>(message.msg_controllen);
  if (request(socket, isIPv6) ||
      ::getsockopt(socket, isIPv6 ? IPPROTO_IPV6 : IPPROTO_IP,
                   isIPv6 ? kIPv6PacketOptions : IP_PKTOPTIONS, message.msg_control, &size) != 0) {
    return std::nullopt;
  }
  message.msg_controllen = size;
  return received(message, local.port());
}

std::optional<PacketInfo::Received> PacketInfo::received(msghdr& message, std::uint16_t port) {
  std::optional<Received> received;
  for (auto* control = CMSG_FIRSTHDR(&message); control != nullptr;
       control = CMSG_NXTHDR(&message, control)) {
    if (control->cmsg_level == IPPROTO_IP && control->cmsg_type == IP_PKTINFO) {
      return readInfo<in_pktinfo>(*control, port);
    }
    if (control->cmsg_level == IPPROTO_IPV6 && control->cmsg_type == IPV6_PKTINFO) {
      received = readInfo<in6_pktinfo>(*control, port);  // one of IPv4 may follow, and says more
    }
  }
  return received;
}

void PacketInfo::sendFrom(msghdr& message, const SocketAddress& source) {
  prepareToReceive(message);
  if (source.isIPv6()) {
    const auto& own = source.v6();
    writeInfo(
        message, IPPROTO_IPV6, IPV6_PKTINFO,
        in6_pktinfo{isMulticast(own.sin6_addr) ? in6addr_any : own.sin6_addr, own.sin6_scope_id});
  } else {
    writeInfo(message, IPPROTO_IP, IP_PKTINFO, in_pktinfo{0, source.v4().sin_addr, {}});
  }
}

}  // namespace platform
