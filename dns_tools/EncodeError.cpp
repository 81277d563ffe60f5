#include "dns_tools/EncodeError.h"

using DnsToolsSocket::EncodeError;

void platform::Describer<EncodeError>::describe(std::string& out, EncodeError error) {
  // In the order of the cases.
  static constexpr const char* kNames[] = {
      "tooManyEntries", "labelTooLong", "attributeTooLong", "dataTooLong", "messageTooLong",
  };
  out.append(kNames[static_cast<std::size_t>(error)]);
}
