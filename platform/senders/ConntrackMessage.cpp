#include "platform/senders/ConntrackMessage.h"

#include <libmnl/libmnl.h>
#include <linux/netfilter/nfnetlink.h>
#include <linux/netfilter/nfnetlink_conntrack.h>

#include <array>
#include <cstring>
#include <optional>

namespace platform {

namespace {

constexpr std::uint16_t messageType(std::uint16_t message) {
  return NFNL_SUBSYS_CTNETLINK << 8 | message;
}

/// Larger than any request: the headers, and some ten attributes of at most 20 octets.
struct alignas(nlmsghdr) RequestRoom {
  std::array<std::uint8_t, 256> bytes;
};

std::error_code systemError(int number) { return {number, std::generic_category()}; }

nlmsghdr& putHeader(RequestRoom& room, sa_family_t family, std::uint32_t sequence) {
  auto& header = *mnl_nlmsg_put_header(room.bytes.data());
  header.nlmsg_type = messageType(IPCTNL_MSG_CT_GET);
  header.nlmsg_flags = NLM_F_REQUEST;
  header.nlmsg_seq = sequence;
  const nfgenmsg netfilter{static_cast<std::uint8_t>(family), NFNETLINK_V0, 0};
  std::memcpy(mnl_nlmsg_put_extra_header(&header, sizeof netfilter), &netfilter, sizeof netfilter);
  return header;
}

void putAddresses(nlmsghdr& header, const SocketAddress& from, const SocketAddress& to) {
  auto* const nest = mnl_attr_nest_start(&header, CTA_TUPLE_IP);
  if (from.isIPv6()) {
    mnl_attr_put(&header, CTA_IP_V6_SRC, sizeof(in6_addr), &from.v6().sin6_addr);
    mnl_attr_put(&header, CTA_IP_V6_DST, sizeof(in6_addr), &to.v6().sin6_addr);
  } else {
    mnl_attr_put(&header, CTA_IP_V4_SRC, sizeof(in_addr), &from.v4().sin_addr);
    mnl_attr_put(&header, CTA_IP_V4_DST, sizeof(in_addr), &to.v4().sin_addr);
  }
  mnl_attr_nest_end(&header, nest);
}

void putPorts(nlmsghdr& header, const SocketAddress& from, const SocketAddress& to) {
  auto* const nest = mnl_attr_nest_start(&header, CTA_TUPLE_PROTO);
  mnl_attr_put_u8(&header, CTA_PROTO_NUM, IPPROTO_UDP);
  mnl_attr_put_u16(&header, CTA_PROTO_SRC_PORT, htons(from.port()));
  mnl_attr_put_u16(&header, CTA_PROTO_DST_PORT, htons(to.port()));
  mnl_attr_nest_end(&header, nest);
}

/// The payload of the first attribute of this type among `attributes`; empty for none.
DataView payloadOf(DataView attributes, std::uint16_t type) {
  const auto end = attributes.data() + attributes.size();
  const auto* attribute = reinterpret_cast<const nlattr*>(attributes.data());
  const auto remaining = [&] {
    return static_cast<int>(end - reinterpret_cast<const std::uint8_t*>(attribute));
  };
  for (; mnl_attr_ok(attribute, remaining()); attribute = mnl_attr_next(attribute)) {
    if (mnl_attr_get_type(attribute) == type) {
      const auto* const payload = static_cast<const std::uint8_t*>(mnl_attr_get_payload(attribute));
      return {payload, mnl_attr_get_payload_len(attribute)};
    }
  }
  return {};
}

template <class Value>
bool readValue(DataView payload, Value& value) {
  const bool fits = payload.size() == sizeof value;
  if (fits) {
    std::memcpy(&value, payload.data(), sizeof value);
  }
  return fits;
}

/// Which attributes hold one end of an exchange.
struct EndTypes {
  std::uint16_t v4, v6, port;
};
constexpr EndTypes kSource{CTA_IP_V4_SRC, CTA_IP_V6_SRC, CTA_PROTO_SRC_PORT};
constexpr EndTypes kDestination{CTA_IP_V4_DST, CTA_IP_V6_DST, CTA_PROTO_DST_PORT};

std::optional<SocketAddress> readEnd(DataView tuple, const EndTypes& types) {
  const auto addresses = payloadOf(tuple, CTA_TUPLE_IP);
  sockaddr_in v4{};
  sockaddr_in6 v6{};
  if (!readValue(payloadOf(payloadOf(tuple, CTA_TUPLE_PROTO), types.port), v4.sin_port)) {
    return std::nullopt;
  }
  if (readValue(payloadOf(addresses, types.v4), v4.sin_addr)) {
    v4.sin_family = AF_INET;
    return SocketAddress(v4);
  }
  if (readValue(payloadOf(addresses, types.v6), v6.sin6_addr)) {
    v6.sin6_family = AF_INET6;
    v6.sin6_port = v4.sin_port;
    return SocketAddress(v6);
  }
  return std::nullopt;
}

tl::expected<OriginalAddresses, std::error_code> readEntry(DataView attributes) {
  const auto tuple = payloadOf(attributes, CTA_TUPLE_ORIG);
  const auto source = readEnd(tuple, kSource);
  const auto destination = readEnd(tuple, kDestination);
  if (!source || !destination || source->family() != destination->family()) {
    return tl::unexpected(systemError(EBADMSG));
  }
  return OriginalAddresses{*source, *destination};
}

/// The number of an error message is negative; 0 is a receipt, which no request asks for.
std::error_code readError(DataView payload) {
  nlmsgerr message{};
  if (payload.size() < sizeof message) {
    return systemError(EBADMSG);
  }
  std::memcpy(&message, payload.data(), sizeof message);
  constexpr int kLargest = 4095;  // of the kernel's numbers
  const bool isError = message.error < 0 && message.error >= -kLargest;
  return systemError(isError ? -message.error : EBADMSG);
}

}  // namespace

Data conntrackRequest(const SocketAddress& peer, const SocketAddress& local,
                      std::uint32_t sequence) {
  RequestRoom room{};
  auto& header = putHeader(room, peer.family(), sequence);
  auto* const tuple = mnl_attr_nest_start(&header, CTA_TUPLE_REPLY);
  putAddresses(header, local, peer);
  putPorts(header, local, peer);
  mnl_attr_nest_end(&header, tuple);
  return {room.bytes.begin(), room.bytes.begin() + header.nlmsg_len};
}

tl::expected<OriginalAddresses, std::error_code> readConntrackAnswer(DataView datagram,
                                                                     std::uint32_t sequence) {
  const auto* const header = reinterpret_cast<const nlmsghdr*>(datagram.data());
  // mnl_nlmsg_ok takes a length beyond INT_MAX for a small one.
  if (datagram.size() < sizeof *header || header->nlmsg_len < sizeof *header ||
      header->nlmsg_len > datagram.size()) {
    return tl::unexpected(systemError(EBADMSG));
  }
  if (header->nlmsg_seq != sequence) {
    return tl::unexpected(systemError(ENOMSG));
  }
  const DataView payload = datagram.subspan(0, header->nlmsg_len).subspan(sizeof *header);
  if (header->nlmsg_type == NLMSG_ERROR) {
    return tl::unexpected(readError(payload));
  }
  if (header->nlmsg_type != messageType(IPCTNL_MSG_CT_NEW) || payload.size() < sizeof(nfgenmsg)) {
    return tl::unexpected(systemError(EBADMSG));
  }
  return readEntry(payload.subspan(sizeof(nfgenmsg)));
}

}  // namespace platform
