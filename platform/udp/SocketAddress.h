#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <optional>
#include <string>
#include <system_error>

namespace platform {

/// An IPv4 or IPv6 address and a port, as the system's calls take and give it.
class SocketAddress {
 public:
  /// Room for what a system call fills in.
  SocketAddress() : address_{} {}
  explicit SocketAddress(const sockaddr_in& address) : address_{} { address_.v4 = address; }
  explicit SocketAddress(const sockaddr_in6& address) : address_{} { address_.v6 = address; }

  /// Nothing unless `host` is the text of an IPv4 address, or of an IPv6 address with or without
  /// `%scope` (the name or number of a network interface). An IPv4 address written as an IPv6 one
  /// (RFC 4291, section 2.5.5.2) is the IPv4 address. Names are not looked up.
  static std::optional<SocketAddress> parse(const std::string& host, std::uint16_t port);

  /// Becomes the address that `socket` has on its own side.
  std::error_code readOwnSideOf(int socket);

  [[nodiscard]] bool isIPv6() const { return family() == AF_INET6; }
  /// The address that stands for all addresses of the machine.
  [[nodiscard]] bool isWildcard() const;
  [[nodiscard]] std::uint16_t port() const;
  void setPort(std::uint16_t port);
  /// The IPv4 address that an IPv6 form stands for, as a socket for both families gives it; any
  /// other as it is.
  [[nodiscard]] SocketAddress unmapped() const;
  /// The form that `parse` reads.
  [[nodiscard]] std::string host() const;
  /// `127.0.0.1:53`, `[::1]:53`.
  void describe(std::string& out) const;

  [[nodiscard]] sa_family_t family() const { return address_.any.sa_family; }
  [[nodiscard]] const sockaddr_in& v4() const { return address_.v4; }
  [[nodiscard]] const sockaddr_in6& v6() const { return address_.v6; }
  [[nodiscard]] sockaddr_in6& v6() { return address_.v6; }

  [[nodiscard]] const sockaddr* data() const { return &address_.any; }
  [[nodiscard]] sockaddr* data() { return &address_.any; }
  [[nodiscard]] socklen_t size() const {
    return isIPv6() ? sizeof address_.v6 : sizeof address_.v4;
  }
  static constexpr socklen_t kMaxSize = sizeof(sockaddr_in6);

  bool operator==(const SocketAddress& other) const;

 private:
  union {
    sockaddr any;
    sockaddr_in v4;
    sockaddr_in6 v6;
  } address_;
};

}  // namespace platform
