// The map is the one that a reader of its own makes of the same text, and finds a server for each
// fragment; where no server is any good, the check finds one fault with each entry.

#include <algorithm>
#include <map>
#include <string>

#include "DnsProxyExt/routing/MappedDomains.h"
#include "DnsProxyExt/settings/SettingFaults.h"
#include "fuzz/Target.h"
#include "platform/base/Description.h"

namespace quillet::fuzz {

/// Reads byte by byte what stands between the enclosing characters, one byte each.
std::map<std::string, std::string> readEntries(std::string_view text) {
  std::map<std::string, std::string> entries;
  std::string parts[3];
  std::size_t colons = 0;
  for (const char c : std::string(text) + ",") {
    if (c == ',') {
      if (colons > 0) {
        entries[parts[0]] = colons == 2 ? parts[1] + ":" + parts[2] : parts[1];
      }
      parts[0] = parts[1] = parts[2] = "";
      colons = 0;
    } else if (c == ':') {
      ++colons;
    } else if (colons < 3) {
      parts[colons].push_back(c);
    }
  }
  return entries;
}

void run(platform::DataView input) {
  const auto text = platform::textOf(input);
  parseMappedDomains(text);
  const auto setting = "[" + std::string(text) + "]";
  const auto map = parseMappedDomains(setting);
  const auto entries = readEntries(text);
  require(map.size() == entries.size());
  const auto faults = faultsOfMappedDomains(setting, [](const auto&) { return true; });
  const auto commas = std::count(text.begin(), text.end(), ',');
  require(faults.size() == (text.empty() ? 0 : static_cast<std::size_t>(commas) + 1));
  for (const auto& [fragment, server] : entries) {
    const auto found = map.server(fragment);
    const bool isSearched = !fragment.empty() && fragment.size() <= DomainMap::kMaxSearched;
    require(isSearched
                ? platform::description(found) == platform::description(Utils::DNSHost(server))
                : found == nullptr);
  }
}

}  // namespace quillet::fuzz
