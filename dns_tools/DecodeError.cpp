#include "dns_tools/DecodeError.h"

using DnsToolsSocket::DecodeError;

void platform::Describer<DecodeError>::describe(std::string& out, DecodeError error) {
  // In the order of the cases.
  static constexpr const char* kNames[] = {
      "invalidMessageSize", "invalidLabelSize", "invalidLabelOffset", "unicodeDecodingError",
      "invalidIntegerSize", "invalidIPAddress", "invalidDataSize",    "invalidQuestion",
  };
  out.append(kNames[static_cast<std::size_t>(error)]);
}
