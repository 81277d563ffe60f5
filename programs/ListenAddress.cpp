#include "programs/ListenAddress.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <array>

#include "platform/base/WholeNumber.h"

namespace quillet {

namespace {

struct HostAndPort {
  std::string_view host;
  std::string_view port;
  bool inBrackets = false;
};

std::optional<HostAndPort> split(std::string_view text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string_view::npos) {
    return std::nullopt;
  }
  HostAndPort parts{text.substr(0, colon), text.substr(colon + 1)};
  if (parts.host.size() >= 2 && parts.host.front() == '[' && parts.host.back() == ']') {
    parts.host = parts.host.substr(1, parts.host.size() - 2);
    parts.inBrackets = true;
  }
  return parts;
}

// The address as the system writes it, so that two spellings of one address are equal.
std::optional<std::string> canonicalHost(std::string_view host, int family) {
  std::array<unsigned char, sizeof(in6_addr)> bytes{};
  if (::inet_pton(family, std::string(host).c_str(), bytes.data()) != 1) {
    return std::nullopt;
  }
  std::array<char, INET6_ADDRSTRLEN> text{};
  return ::inet_ntop(family, bytes.data(), text.data(), text.size());
}

}  // namespace

std::optional<ListenAddress> ListenAddress::parse(std::string_view text) {
  const auto parts = split(text);
  if (!parts || text.find('\0') != std::string_view::npos) {
    return std::nullopt;
  }
  const auto host = canonicalHost(parts->host, parts->inBrackets ? AF_INET6 : AF_INET);
  const auto port = platform::wholeNumber<std::uint16_t>(parts->port);
  if (!host || !port) {
    return std::nullopt;
  }
  return ListenAddress{*host, *port, parts->inBrackets};
}

std::string ListenAddress::text() const {
  return (isIPv6 ? '[' + host + ']' : host) + ':' + std::to_string(port);
}

}  // namespace quillet
