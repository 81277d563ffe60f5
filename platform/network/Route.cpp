#include "platform/network/Route.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "platform/base/FileDescriptor.h"

namespace platform {

namespace {

constexpr std::size_t kAnswerSize = 64UL * 1024;

/// Copies a `T` from the front of `bytes`, or nothing when there are too few.
template <class T>
std::optional<T> front(DataView bytes) {
  if (bytes.size() < sizeof(T)) {
    return std::nullopt;
  }
  T value{};
  std::memcpy(&value, bytes.data(), sizeof value);
  return value;
}

/// What follows a piece of `length` octets, after which the next one begins at a multiple of four.
DataView after(DataView bytes, std::size_t length) {
  constexpr std::size_t kAlignment = 4;
  const std::size_t padded = (length + kAlignment - 1) / kAlignment * kAlignment;
  return bytes.subspan(std::min(padded, bytes.size()));
}

/// The one or, of a route with several next hops, each interface.
void appendHops(std::vector<Route>& routes, Route route, DataView hops) {
  while (const auto hop = front<rtnexthop>(hops)) {
    if (hop->rtnh_len < sizeof(rtnexthop)) {
      return;
    }
    route.interfaceIndex = static_cast<unsigned>(hop->rtnh_ifindex);
    routes.push_back(route);
    hops = after(hops, hop->rtnh_len);
  }
}

void appendRoute(std::vector<Route>& routes, const rtmsg& header, DataView attributes) {
  Route route{.addressLength = header.rtm_family == AF_INET ? 4UL : 16UL,
              .interfaceIndex = 0,
              .isDefault = header.rtm_dst_len == 0,
              .metric = 0};
  DataView hops;
  while (const auto attribute = front<rtattr>(attributes)) {
    if (attribute->rta_len < sizeof(rtattr) || attribute->rta_len > attributes.size()) {
      return;
    }
    const auto value = attributes.first(attribute->rta_len).subspan(sizeof(rtattr));
    if (attribute->rta_type == RTA_OIF) {
      route.interfaceIndex = front<unsigned>(value).value_or(0);
    } else if (attribute->rta_type == RTA_PRIORITY) {
      route.metric = front<std::uint32_t>(value).value_or(0);
    } else if (attribute->rta_type == RTA_MULTIPATH) {
      hops = value;
    }
    attributes = after(attributes, attribute->rta_len);
  }
  if (route.interfaceIndex != 0) {
    routes.push_back(route);
  }
  appendHops(routes, route, hops);
}

bool counts(const rtmsg& header) {
  const bool isInternet = header.rtm_family == AF_INET || header.rtm_family == AF_INET6;
  return isInternet && header.rtm_type == RTN_UNICAST && (header.rtm_flags & RTM_F_CLONED) == 0;
}

bool requestAll(int descriptor) {
  struct {
    nlmsghdr header;
    rtmsg route;
  } request{};
  request.header.nlmsg_len = sizeof request;
  request.header.nlmsg_type = RTM_GETROUTE;
  request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  return ::send(descriptor, &request, sizeof request, 0) == sizeof request;
}

}  // namespace

bool Route::append(std::vector<Route>& routes, DataView messages) {
  while (const auto message = front<nlmsghdr>(messages)) {
    if (message->nlmsg_type != RTM_NEWROUTE || message->nlmsg_len < sizeof(nlmsghdr) ||
        message->nlmsg_len > messages.size()) {
      return false;  // NLMSG_DONE, NLMSG_ERROR, or nonsense
    }
    const auto body = messages.first(message->nlmsg_len).subspan(sizeof(nlmsghdr));
    const auto route = front<rtmsg>(body);
    if (route && counts(*route)) {
      appendRoute(routes, *route, after(body, sizeof(rtmsg)));
    }
    messages = after(messages, message->nlmsg_len);
  }
  return true;
}

// The kernel makes each piece of its answer while it is read, so nothing here waits.
std::vector<Route> Route::readAll() {
  std::vector<Route> routes;
  const FileDescriptor socket(
      ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE));
  if (!socket.isOpen() || !requestAll(socket.get())) {
    return routes;
  }
  Data answer(kAnswerSize);
  while (routes.size() < kMaxRoutes) {
    const auto size = ::recv(socket.get(), answer.data(), answer.size(), 0);
    if (size <= 0 || !append(routes, DataView(answer).first(static_cast<std::size_t>(size)))) {
      break;
    }
  }
  return routes;
}

}  // namespace platform
