#pragma once

#include <cstdint>

namespace DnsToolsSocket {

/// Known values of a message's OPCODE; any other value may be carried.
struct OperationCode {
  // NOLINTBEGIN(readability-identifier-naming): used as enumerators are, and named like them
  static constexpr std::uint8_t query = 0;
  static constexpr std::uint8_t inverseQuery = 1;
  static constexpr std::uint8_t statusRequest = 2;
  static constexpr std::uint8_t notify = 4;
  static constexpr std::uint8_t update = 5;
  // NOLINTEND(readability-identifier-naming)
};

}  // namespace DnsToolsSocket
