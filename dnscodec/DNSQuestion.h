#pragma once

#include <cstdint>
#include <string>

namespace quillet {

/// One entry of the question section (RFC 1035 section 4.1.2). The name has no trailing dot; the
/// root is ".".
struct DNSQuestion {
  std::string name;
  std::uint16_t type = 0;
  std::uint16_t questionClass = 0;

  bool operator==(const DNSQuestion&) const = default;
};

}  // namespace quillet
