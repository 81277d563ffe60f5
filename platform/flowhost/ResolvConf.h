#pragma once

#include <cstddef>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <tl/expected.hpp>

#include "platform/networkextension/NEDNSSettings.h"

namespace platform {

/// A larger file is no resolver configuration; octets.
inline constexpr std::size_t kMaxResolvConfSize = 64UL * 1024;
/// The C library looks at three.
inline constexpr std::size_t kMaxResolvConfServers = 16;

/// The `nameserver` lines of a text in the form of resolv.conf(5), in order.
NEDNSSettings dnsSettingsFrom(std::string_view text);

/// The same of a file. An error is the system's, or `file_too_large`.
tl::expected<NEDNSSettings, std::error_code> readResolvConf(
    const std::filesystem::path& file = "/etc/resolv.conf");

}  // namespace platform
