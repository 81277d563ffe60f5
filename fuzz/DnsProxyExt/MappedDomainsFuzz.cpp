// Each entry of a map is what it is by itself, and the last one of a fragment counts; where no
// server is any good, the check finds one fault with each entry.

#include <algorithm>
#include <map>
#include <sstream>
#include <string>

#include "DnsProxyExt/routing/MappedDomains.h"
#include "DnsProxyExt/settings/SettingFaults.h"
#include "fuzz/Target.h"
#include "platform/base/Description.h"

void quillet::fuzz::run(platform::DataView input) {
  const std::string text(platform::textOf(input));
  parseMappedDomains(text);
  const auto map = parseMappedDomains("[" + text + "]");
  std::map<std::string, std::string> servers;
  std::istringstream entries(text);
  for (std::string entry; std::getline(entries, entry, ',');) {
    if (const auto colon = entry.find(':'); colon != std::string::npos) {
      const auto alone = parseMappedDomains("[" + entry + "]");
      require(alone.size() == 1);
      const auto fragment = entry.substr(0, colon);
      servers[fragment] = platform::description(alone.server(fragment));
    }
  }
  require(map.size() == servers.size());
  for (const auto& [fragment, server] : servers) {
    require(platform::description(map.server(fragment)) == server);
  }
  const auto faults = faultsOfMappedDomains("[" + text + "]", [](const auto&) { return true; });
  const auto commas = std::count(text.begin(), text.end(), ',');
  require(faults.size() == (text.empty() ? 0 : static_cast<std::size_t>(commas) + 1));
}
