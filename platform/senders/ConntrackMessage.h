#pragma once

#include <cstdint>
#include <system_error>
#include <tl/expected.hpp>

#include "platform/base/Data.h"
#include "platform/udp/SocketAddress.h"

namespace platform {

/// The two ends of a tracked exchange as the first of its packets named them, before any network
/// address translation.
struct OriginalAddresses {
  SocketAddress source;
  SocketAddress destination;
};

/// The netlink message that asks for the tracked UDP exchange whose replies go from `local` to
/// `peer`; both of one family, neither in the IPv6 form of an IPv4 address.
Data conntrackRequest(const SocketAddress& peer, const SocketAddress& local,
                      std::uint32_t sequence);

/// Reads what the kernel has answered to the request `sequence`, one datagram of its socket,
/// aligned as `nlmsghdr`. An error is the one that the kernel gives, ENOENT where no such exchange
/// is tracked; ENOMSG for the answer to another request; EBADMSG for anything else.
tl::expected<OriginalAddresses, std::error_code> readConntrackAnswer(DataView datagram,
                                                                     std::uint32_t sequence);

}  // namespace platform
