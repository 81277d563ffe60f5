#include "dns_tools/IPv6.h"

#include <arpa/inet.h>

#include <cstring>

namespace DnsToolsSocket {

using platform::DataView;

std::optional<IPv6> IPv6::fromPresentation(std::string_view text) {
  // inet_pton reads up to a zero octet; a text that holds one is no address.
  IPv6 ip;
  if (text.find('\0') != std::string_view::npos ||
      ::inet_pton(AF_INET6, std::string(text).c_str(), &ip.address) != 1) {
    return std::nullopt;
  }
  return ip;
}

DataView IPv6::bytes() const {
  return {reinterpret_cast<const std::uint8_t*>(&address), sizeof address};
}

std::optional<std::string> IPv6::presentationString() const {
  char text[INET6_ADDRSTRLEN];
  if (::inet_ntop(AF_INET6, &address, text, sizeof text) == nullptr) {
    return std::nullopt;
  }
  return text;
}

std::string IPv6::presentation() const {
  return presentationString().value_or("Invalid IPv6 address");
}

void IPv6::describe(std::string& out) const { out.append(presentation()); }

bool IPv6::operator==(const IPv6& other) const {
  return std::memcmp(&address, &other.address, sizeof address) == 0;
}

}  // namespace DnsToolsSocket
