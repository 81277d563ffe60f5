#include "dnscodec/HexText.h"

namespace quillet {

namespace {

// Reckoned, not looked up: so the compiler makes sixteen digits at a time.
char hexDigit(int nibble) { return static_cast<char>(nibble + (nibble > 9 ? 'a' - 10 : '0')); }

}  // namespace

void appendHex(std::string& out, platform::DataView bytes) {
  const auto start = out.size();
  out.resize(start + 2 * bytes.size());
  char* const digits = out.data() + start;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    digits[2 * i] = hexDigit(bytes[i] >> 4);
    digits[2 * i + 1] = hexDigit(bytes[i] & 0xF);
  }
}

}  // namespace quillet
