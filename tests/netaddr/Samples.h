#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "netaddr/BigInt.h"
#include "netaddr/NamedException.h"

namespace quillet::test {

/// How GoogleTest prints a value.
inline void PrintTo(const BigInt& value, std::ostream* out) {  // NOLINT: GoogleTest's name
  *out << "0x" << value.toStringWithRadix(16);
}

/// Of hexadecimal digits.
inline BigInt number(std::string_view text) { return {text, 16}; }

/// 2^2239 - 1 and -2^2239.
inline BigInt highest() { return BigInt(1).shiftLeft(2239).bitNot(); }
inline BigInt lowest() { return BigInt(1).shiftLeft(2239); }

/// "name: reason" of the NamedException that the call throws; empty when it throws none.
template <class Call>
std::string thrownBy(Call call) {
  try {
    call();
  } catch (const NamedException& exception) {
    return std::string(exception.name()) + ": " + std::string(exception.reason());
  }
  return {};
}

}  // namespace quillet::test
