#pragma once

#include <cstdint>
#include <string_view>

namespace DnsToolsSocket {

/// Known types of questions and records; any other value may be carried.
struct RecordType {
  // NOLINTBEGIN(readability-identifier-naming): used as enumerators are, and named like them
  static constexpr std::uint16_t host = 1;
  static constexpr std::uint16_t nameServer = 2;
  static constexpr std::uint16_t alias = 5;
  static constexpr std::uint16_t startOfAuthority = 6;
  static constexpr std::uint16_t pointer = 12;
  static constexpr std::uint16_t mailExchange = 15;
  static constexpr std::uint16_t text = 16;
  static constexpr std::uint16_t host6 = 28;
  static constexpr std::uint16_t service = 33;
  static constexpr std::uint16_t SVCB = 64;
  static constexpr std::uint16_t HTTPSSVC = 65;
  static constexpr std::uint16_t incrementalZoneTransfer = 251;
  static constexpr std::uint16_t standardZoneTransfer = 252;
  static constexpr std::uint16_t all = 255;
  // NOLINTEND(readability-identifier-naming)
};

/// The usual abbreviation of a known type ("AAAA"), "Unknown" of any other value.
std::string_view typeDescription(std::uint16_t type);

}  // namespace DnsToolsSocket
