#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "netaddr/IPv6.h"

namespace quillet {

/// The place where a prefix length stands in the text of an IPv6 address: "/" and one to three
/// digits, before a "%" or the end.
struct IPv6Prefix {
  std::size_t begin;
  /// Absent, with `begin` at the text's end, when this is empty.
  std::string_view digits;
};
IPv6Prefix findIPv6Prefix(std::string_view text);

/// Where the zone begins: at the first "%" after the last line break, which a zone cannot hold;
/// the text's size when there is none.
std::size_t findIPv6Zone(std::string_view text);

/// The groups that a text holds, and how many of them stand before its "::".
struct IPv6Groups {
  std::array<std::uint16_t, IPv6::kGroups> values{};
  std::size_t count = 0;
  std::optional<std::size_t> elision;
};
/// Reads groups of one to four hexadecimal digits with colons between them, one "::" among them.
/// Absent for any other text, and for more groups than an address has.
std::optional<IPv6Groups> readIPv6Groups(std::string_view text);

/// Why a text is no address of so many groups; the text is none.
std::string ipv6Error(std::string_view text, int groups);

}  // namespace quillet
