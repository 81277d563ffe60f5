#pragma once

#include <cstdint>
#include <string_view>

#include "dns_tools/IPv4.h"
#include "dns_tools/IPv6.h"

namespace quillet {

/// FNV-1a, 64 bits, over the bytes of `name` without its final dot, ASCII letters in lower case:
/// the same in every language, so that a test can tell which address belongs to a name.
std::uint64_t nameHash(std::string_view name);

/// The address in 198.18.0.0/15 whose low 17 bits are those of the name's hash.
DnsToolsSocket::IPv4 demoIPv4(std::string_view name);

/// The address in 2001:db8::/64 whose low 64 bits are the name's hash.
DnsToolsSocket::IPv6 demoIPv6(std::string_view name);

}  // namespace quillet
