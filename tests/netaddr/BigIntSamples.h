#pragma once

#include <ostream>
#include <string_view>

#include "netaddr/BigInt.h"

namespace quillet {

/// How GoogleTest prints a value.
inline void PrintTo(const BigInt& value, std::ostream* out) {  // NOLINT: GoogleTest's name
  *out << "0x" << value.toStringWithRadix(16);
}

inline BigInt hex(std::string_view text) { return {text, 16}; }

/// 2^2239 - 1 and -2^2239.
inline BigInt highest() { return BigInt(1).shiftLeft(2239).bitNot(); }
inline BigInt lowest() { return BigInt(1).shiftLeft(2239); }

}  // namespace quillet
