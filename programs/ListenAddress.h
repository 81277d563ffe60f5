#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillet {

/// A numeric address and port that a program is told to listen on: `127.0.0.1:5300`, `[::1]:5300`.
struct ListenAddress {
  std::string host;  ///< as inet_ntop writes it, without brackets
  std::uint16_t port = 0;
  bool isIPv6 = false;

  /// Nothing unless `text` is an IPv4 address or an IPv6 address in brackets, a colon, and a
  /// decimal port from 0 to 65535. Port 0 leaves the choice to the system. Names are not looked up.
  static std::optional<ListenAddress> parse(std::string_view text);

  /// The form that `parse` reads.
  [[nodiscard]] std::string text() const;

  bool operator==(const ListenAddress&) const = default;
};

}  // namespace quillet
