#include "platform/networkextension/NEDNSSettings.h"

#include "platform/foundation/Description.h"
#include "platform/foundation/RegularFile.h"

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

NEDNSSettings NEDNSSettings::fromResolvConf(std::string_view text) {
  NEDNSSettings settings;
  while (!text.empty() && settings.servers.size() < kMaxServers) {
    const auto end = std::min(text.find('\n'), text.size());
    if (const auto server = serverIn(text.substr(0, end)); !server.empty()) {
      settings.servers.emplace_back(server);
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return settings;
}

tl::expected<NEDNSSettings, std::error_code> NEDNSSettings::fromFile(
    const std::filesystem::path& resolvConf) {
  const auto content = readRegularFile(resolvConf, kMaxFileSize);
  if (!content) {
    return tl::make_unexpected(content.error());
  }
  return fromResolvConf(content->text);
}

void NEDNSSettings::describe(std::string& out) const {
  out.append("NEDNSSettings(servers: ");
  platform::describe(out, servers);
  out.push_back(')');
}

}  // namespace platform
