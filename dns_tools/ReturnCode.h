#pragma once

#include <cstdint>

namespace DnsToolsSocket {

/// Known values of a message's RCODE (RFC 1035 section 4.1.1, RFC 2136 section 2.2); any other
/// value may be carried.
struct ReturnCode {
  // NOLINTBEGIN(readability-identifier-naming): used as enumerators are, and named like them
  static constexpr std::uint8_t noError = 0;
  static constexpr std::uint8_t formatError = 1;
  static constexpr std::uint8_t serverFailure = 2;
  static constexpr std::uint8_t nonExistentDomain = 3;
  static constexpr std::uint8_t notImplemented = 4;
  static constexpr std::uint8_t queryRefused = 5;
  static constexpr std::uint8_t nameExistsWhenItShouldNot = 6;
  static constexpr std::uint8_t rrSetExistsWhenItShouldNot = 7;
  static constexpr std::uint8_t rrSetThatShouldExistDoestNot = 8;
  static constexpr std::uint8_t serverNotAuthoritativeForZone = 9;
  static constexpr std::uint8_t nameNotContainedInZone = 10;
  // NOLINTEND(readability-identifier-naming)
};

}  // namespace DnsToolsSocket
