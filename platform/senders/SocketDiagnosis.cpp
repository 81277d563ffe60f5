#include "platform/senders/SocketDiagnosis.h"

#include <libmnl/libmnl.h>
#include <linux/inet_diag.h>
#include <linux/sock_diag.h>
#include <netinet/tcp.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace platform::socket_diagnosis {

namespace {

constexpr std::uint32_t kAllStates = ~0U;
constexpr unsigned kCookieHalfBits = 32;

std::uint8_t protocolOf(Transport transport) {
  return transport == Transport::udp ? IPPROTO_UDP : IPPROTO_TCP;
}

// The kernel has room for an IPv6 address wherever it speaks of one.
template <class Words>
void putAddress(Words& words, const SocketAddress& address) {
  if (address.isIPv6()) {
    std::memcpy(&words, &address.v6().sin6_addr, sizeof(in6_addr));
  } else {
    std::memcpy(&words, &address.v4().sin_addr, sizeof(in_addr));
  }
}

template <class Words>
SocketAddress addressFrom(std::uint8_t family, const Words& words, std::uint16_t port) {
  if (family == AF_INET) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = port;
    std::memcpy(&address.sin_addr, &words, sizeof address.sin_addr);
    return SocketAddress(address);
  }
  sockaddr_in6 address{};
  address.sin6_family = AF_INET6;
  address.sin6_port = port;
  std::memcpy(&address.sin6_addr, &words, sizeof address.sin6_addr);
  return SocketAddress(address).unmapped();
}

Data request(const inet_diag_req_v2& body, std::uint16_t flags, std::uint32_t sequence) {
  Data bytes(mnl_nlmsg_size(sizeof body));
  auto* const header = mnl_nlmsg_put_header(bytes.data());
  header->nlmsg_type = SOCK_DIAG_BY_FAMILY;
  header->nlmsg_flags = static_cast<std::uint16_t>(NLM_F_REQUEST | flags);
  header->nlmsg_seq = sequence;
  std::memcpy(mnl_nlmsg_put_extra_header(header, sizeof body), &body, sizeof body);
  return bytes;
}

int readAttribute(const nlattr* attribute, void* out) {
  auto& socket = *static_cast<DiagnosedSocket*>(out);
  const auto type = mnl_attr_get_type(attribute);
  const auto size = mnl_attr_get_payload_len(attribute);
  if (type == INET_DIAG_CGROUP_ID && size == sizeof(std::uint64_t)) {
    socket.owner.cgroup = mnl_attr_get_u64(attribute);
  } else if (type == INET_DIAG_SKV6ONLY && size == sizeof(std::uint8_t)) {
    socket.isIPv6Only = mnl_attr_get_u8(attribute) != 0;
  }
  return MNL_CB_OK;
}

std::optional<DiagnosedSocket> socketFrom(const nlmsghdr* message) {
  inet_diag_msg body{};
  if (mnl_nlmsg_get_payload_len(message) < sizeof body) {
    return std::nullopt;
  }
  std::memcpy(&body, mnl_nlmsg_get_payload(message), sizeof body);
  if (body.idiag_family != AF_INET && body.idiag_family != AF_INET6) {
    return std::nullopt;
  }
  const auto& id = body.id;
  const std::uint64_t high = id.idiag_cookie[1];
  DiagnosedSocket socket{addressFrom(body.idiag_family, id.idiag_src, id.idiag_sport),
                         addressFrom(body.idiag_family, id.idiag_dst, id.idiag_dport),
                         body.idiag_state == TCP_LISTEN,
                         false,
                         {body.idiag_uid, body.idiag_inode,
                          id.idiag_cookie[0] | high << kCookieHalfBits, std::nullopt}};
  mnl_attr_parse(message, sizeof body, readAttribute, &socket);
  return socket;
}

/// An error message holds the errno value, negative; the end of a list too, or 0.
int errorFrom(const nlmsghdr* message) {
  int code = 0;
  if (mnl_nlmsg_get_payload_len(message) < sizeof code) {
    return EBADMSG;
  }
  std::memcpy(&code, mnl_nlmsg_get_payload(message), sizeof code);
  return code <= 0 && code > -4096 ? -code : EBADMSG;
}

// The library takes a length beyond 2^31 for a negative one, and reads up to the padded end.
bool isWhole(const nlmsghdr* message, int left) {
  if (!mnl_nlmsg_ok(message, left)) {
    return false;
  }
  const auto room = static_cast<std::uint32_t>(left);
  const auto padding = -message->nlmsg_len % NLMSG_ALIGNTO;
  return message->nlmsg_len <= room && padding <= room - message->nlmsg_len;
}

void readMessage(const nlmsghdr* message, Answer& answer) {
  if (message->nlmsg_type == NLMSG_DONE || message->nlmsg_type == NLMSG_ERROR) {
    answer.isComplete = true;
    answer.error = errorFrom(message);
    return;
  }
  const auto socket =
      message->nlmsg_type == SOCK_DIAG_BY_FAMILY ? socketFrom(message) : std::nullopt;
  if (socket) {
    answer.sockets.push_back(*socket);
  } else {
    answer.isComplete = true;
    answer.error = EBADMSG;
  }
}

}  // namespace

Data exactRequest(const Query& query, std::uint32_t sequence) {
  inet_diag_req_v2 body{};
  body.sdiag_family = static_cast<std::uint8_t>(query.family);
  body.sdiag_protocol = protocolOf(query.transport);
  body.idiag_states = kAllStates;
  body.id.idiag_sport = htons(query.source.port());
  body.id.idiag_dport = htons(query.destination.port());
  putAddress(body.id.idiag_src, query.source);
  putAddress(body.id.idiag_dst, query.destination);
  body.id.idiag_if = query.interfaceIndex;
  std::fill(std::begin(body.id.idiag_cookie), std::end(body.id.idiag_cookie), INET_DIAG_NOCOOKIE);
  return request(body, 0, sequence);
}

Data portRequest(Transport transport, sa_family_t family, std::uint16_t port,
                 std::uint32_t sequence) {
  inet_diag_req_v2 body{};
  body.sdiag_family = static_cast<std::uint8_t>(family);
  body.sdiag_protocol = protocolOf(transport);
  body.idiag_states = kAllStates;
  body.id.idiag_sport = htons(port);
  return request(body, NLM_F_DUMP, sequence);
}

Answer read(DataView bytes, std::uint32_t sequence) {
  Answer answer;
  int left = static_cast<int>(bytes.size());
  const auto* message = static_cast<const nlmsghdr*>(static_cast<const void*>(bytes.data()));
  while (!answer.isComplete && left > 0) {
    if (!isWhole(message, left)) {
      return {std::move(answer.sockets), true, EBADMSG};
    }
    if (message->nlmsg_seq == sequence) {
      readMessage(message, answer);
    }
    message = mnl_nlmsg_next(message, &left);
  }
  return answer;
}

}  // namespace platform::socket_diagnosis
