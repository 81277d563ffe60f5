#include "platform/flowhost/ResolvConf.h"

#include <algorithm>

#include "platform/store/RegularFile.h"

namespace platform {

namespace {

constexpr std::string_view kKeyword = "nameserver";
constexpr std::string_view kBlanks = " \t\r\v\f";

// The value of a `nameserver` line, empty for any other: as in the C library the keyword begins the
// line, and the value ends at the next blank.
std::string_view serverIn(std::string_view line) {
  if (!line.starts_with(kKeyword)) {
    return {};
  }
  line.remove_prefix(kKeyword.size());
  const auto start = line.find_first_not_of(" \t");
  if (start == 0 || start == std::string_view::npos) {
    return {};
  }
  line.remove_prefix(start);
  return line.substr(0, line.find_first_of(kBlanks));
}

}  // namespace

NEDNSSettings dnsSettingsFrom(std::string_view text) {
  NEDNSSettings settings;
  while (!text.empty() && settings.servers.size() < kMaxResolvConfServers) {
    const auto end = std::min(text.find('\n'), text.size());
    if (const auto server = serverIn(text.substr(0, end)); !server.empty()) {
      settings.servers.emplace_back(server);
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return settings;
}

tl::expected<NEDNSSettings, std::error_code> readResolvConf(const std::filesystem::path& file) {
  const auto content = readRegularFile(file, kMaxResolvConfSize);
  if (!content) {
    return tl::make_unexpected(content.error());
  }
  return dnsSettingsFrom(content->text);
}

}  // namespace platform
