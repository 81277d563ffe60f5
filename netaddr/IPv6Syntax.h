#pragma once

#include <string>
#include <string_view>

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

/// Whether there is nothing but groups of up to four digits and one or two colons between them:
/// most texts are so, and none of them has one of the errors below. Others may have none either.
bool isPlainIPv6(std::string_view text);

inline bool isHexDigit(char c) {
  const int lower = c | 0x20;
  return (c >= '0' && c <= '9') || (lower >= 'a' && lower <= 'f');
}

/// "Bad character..." for what is neither a hexadecimal digit nor one of ":/%"; empty when all is
/// well. A character is one of UTF-8, or a byte that is part of none.
std::string badCharactersError(std::string_view text);

/// "Address failed regex: ..." for groups of more than four digits, runs of more than two colons,
/// and a single colon or a slash at an end; empty when all is well.
std::string malformedGroupsError(std::string_view text);

}  // namespace quillet
