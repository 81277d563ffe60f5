#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <tl/expected.hpp>
#include <vector>

namespace platform {

/// The DNS servers that the system itself uses. Printed as `NEDNSSettings(servers:
/// ["127.0.0.53"])`.
struct NEDNSSettings {
  /// A larger file is no resolver configuration.
  static constexpr std::size_t kMaxFileSize = 64UL * 1024;
  /// The C library looks at three.
  static constexpr std::size_t kMaxServers = 16;

  /// As the configuration has them, not checked.
  std::vector<std::string> servers;

  /// The `nameserver` lines of a text in the form of resolv.conf(5), in order.
  static NEDNSSettings fromResolvConf(std::string_view text);
  /// The same of a file. An error is the system's, or `file_too_large`.
  static tl::expected<NEDNSSettings, std::error_code> fromFile(
      const std::filesystem::path& resolvConf = "/etc/resolv.conf");

  void describe(std::string& out) const;

  bool operator==(const NEDNSSettings&) const = default;
};

}  // namespace platform
