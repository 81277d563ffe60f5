#include "platform/udp/SocketAddress.h"

#include <arpa/inet.h>
#include <net/if.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/base/SystemError.h"
#include "platform/base/WholeNumber.h"

namespace platform {

namespace {

constexpr std::size_t kMappedPrefixSize = 12;

std::optional<SocketAddress> parseIPv4(const std::string& host, std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  if (::inet_pton(AF_INET, host.c_str(), &address.sin_addr) != 1) {
    return std::nullopt;
  }
  return SocketAddress(address);
}

// The number of the interface; 0 for none.
std::uint32_t parseScope(const std::string& scope) {
  const auto number = wholeNumber<std::uint32_t>(scope);
  return number ? *number : ::if_nametoindex(scope.c_str());
}

std::optional<SocketAddress> parseIPv6(const std::string& host, std::uint16_t port) {
  sockaddr_in6 address{};
  address.sin6_family = AF_INET6;
  address.sin6_port = htons(port);
  const auto percent = host.find('%');
  if (::inet_pton(AF_INET6, host.substr(0, percent).c_str(), &address.sin6_addr) != 1) {
    return std::nullopt;
  }
  if (percent != std::string::npos) {
    address.sin6_scope_id = parseScope(host.substr(percent + 1));
    if (address.sin6_scope_id == 0) {
      return std::nullopt;
    }
  }
  return SocketAddress(address).unmapped();
}

std::string scopeText(std::uint32_t scope) {
  std::array<char, IF_NAMESIZE> name{};
  const bool hasName = ::if_indextoname(scope, name.data()) != nullptr;
  return hasName ? std::string(name.data()) : std::to_string(scope);
}

}  // namespace

std::optional<SocketAddress> SocketAddress::parse(const std::string& host, std::uint16_t port) {
  if (host.find('\0') != std::string::npos) {
    return std::nullopt;
  }
  return host.find(':') == std::string::npos ? parseIPv4(host, port) : parseIPv6(host, port);
}

std::error_code SocketAddress::readOwnSideOf(int socket) {
  socklen_t size = kMaxSize;
  return errorOf(::getsockname(socket, data(), &size));
}

bool SocketAddress::isWildcard() const {
  return isIPv6() ? IN6_IS_ADDR_UNSPECIFIED(&v6().sin6_addr) != 0
                  : v4().sin_addr.s_addr == htonl(INADDR_ANY);
}

std::uint16_t SocketAddress::port() const {
  return ntohs(isIPv6() ? v6().sin6_port : v4().sin_port);
}

void SocketAddress::setPort(std::uint16_t port) {
  (isIPv6() ? address_.v6.sin6_port : address_.v4.sin_port) = htons(port);
}

SocketAddress SocketAddress::unmapped() const {
  if (!isIPv6() || !IN6_IS_ADDR_V4MAPPED(&v6().sin6_addr)) {
    return *this;
  }
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = v6().sin6_port;
  std::memcpy(&address.sin_addr, v6().sin6_addr.s6_addr + kMappedPrefixSize, sizeof(in_addr));
  return SocketAddress(address);
}

std::string SocketAddress::host() const {
  std::array<char, INET6_ADDRSTRLEN> text{};
  if (!isIPv6()) {
    return ::inet_ntop(AF_INET, &v4().sin_addr, text.data(), text.size());
  }
  std::string host = ::inet_ntop(AF_INET6, &v6().sin6_addr, text.data(), text.size());
  if (v6().sin6_scope_id != 0) {
    host.append("%").append(scopeText(v6().sin6_scope_id));
  }
  return host;
}

void SocketAddress::describe(std::string& out) const {
  out.append(isIPv6() ? "[" : "").append(host()).append(isIPv6() ? "]:" : ":");
  out.append(std::to_string(port()));
}

bool SocketAddress::operator==(const SocketAddress& other) const {
  if (family() != other.family()) {
    return false;
  }
  if (!isIPv6()) {
    return v4().sin_port == other.v4().sin_port &&
           v4().sin_addr.s_addr == other.v4().sin_addr.s_addr;
  }
  return v6().sin6_port == other.v6().sin6_port && v6().sin6_scope_id == other.v6().sin6_scope_id &&
         IN6_ARE_ADDR_EQUAL(&v6().sin6_addr, &other.v6().sin6_addr) != 0;
}

}  // namespace platform
