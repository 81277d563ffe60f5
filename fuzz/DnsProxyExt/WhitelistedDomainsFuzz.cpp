// An answer that was read holds nothing but text, and reads the same from its own members written
// anew.

#include "DnsProxyExt/upstream/WhitelistedDomains.h"
#include "fuzz/Target.h"
#include "platform/store/JSONValue.h"

namespace quillet::fuzz {

platform::JSONValue jsonOf(const WhitelistedDomains& policy) {
  auto servers = platform::JSONValue::array();
  for (const auto& [domains, address] : policy.dnsServerSettings) {
    servers.push_back({{"assignedDomains", domains}, {"dnsServerIP", address}});
  }
  return {{"status", policy.status}, {"dnsServerSettings", servers}};
}

void run(platform::DataView input) {
  const auto policy = WhitelistedDomains::decode(input);
  if (!policy) {
    return require(!policy.error().text().empty());
  }
  const auto text = jsonOf(*policy).dump();  // throws where a text is no UTF-8
  const auto again = WhitelistedDomains::decode(platform::bytesOf(text));
  require(again && jsonOf(*again) == jsonOf(*policy));
}

}  // namespace quillet::fuzz
