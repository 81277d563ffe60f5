#include "dns_tools/IPv4.h"

#include <arpa/inet.h>

#include <cstring>

#include "platform/base/Description.h"

namespace DnsToolsSocket {

using platform::DataView;

IPv4::IPv4(std::uint32_t value) : address{htonl(value)} {}

std::optional<IPv4> IPv4::fromPresentation(std::string_view text) {
  // inet_pton reads up to a zero octet; a text that holds one is no address.
  IPv4 ip;
  if (text.find('\0') != std::string_view::npos ||
      ::inet_pton(AF_INET, std::string(text).c_str(), &ip.address) != 1) {
    return std::nullopt;
  }
  return ip;
}

DataView IPv4::bytes() const {
  return {reinterpret_cast<const std::uint8_t*>(&address), sizeof address};
}

std::optional<std::string> IPv4::presentationString() const {
  char text[INET_ADDRSTRLEN];
  if (::inet_ntop(AF_INET, &address, text, sizeof text) == nullptr) {
    return std::nullopt;
  }
  return text;
}

std::string IPv4::presentation() const {
  return presentationString().value_or("Invalid IPv4 address");
}

void IPv4::describe(std::string& out) const {
  // As inet_ntop writes it, without the printf that it goes through: every answer is printed
  // several times.
  const auto octets = bytes();
  for (std::size_t i = 0; i < octets.size(); ++i) {
    if (i > 0) {
      out.push_back('.');
    }
    platform::describe(out, octets[i]);
  }
}

bool IPv4::operator==(const IPv4& other) const {
  return std::memcmp(&address, &other.address, sizeof address) == 0;
}

}  // namespace DnsToolsSocket
