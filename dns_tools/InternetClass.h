#pragma once

#include <cstdint>

namespace DnsToolsSocket {

/// Known classes of questions and records, without the top bit, which is carried apart as `unique`.
struct InternetClass {
  // NOLINTBEGIN(readability-identifier-naming): used as enumerators are, and named like them
  static constexpr std::uint16_t internet = 1;
  static constexpr std::uint16_t chaos = 3;
  static constexpr std::uint16_t hesiod = 4;
  static constexpr std::uint16_t none = 254;
  static constexpr std::uint16_t any = 255;
  // NOLINTEND(readability-identifier-naming)
};

}  // namespace DnsToolsSocket
