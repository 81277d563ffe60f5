// An answer that was read holds nothing but text, and reads the same from its own members written
// anew.

#include "DnsProxyExt/upstream/WhitelistedDomains.h"
#include "fuzz/Target.h"
#include "platform/base/Utf8.h"
#include "platform/store/JSONValue.h"

namespace {

using quillet::WhitelistedDomains;

platform::JSONValue jsonOf(const WhitelistedDomains& policy) {
  auto servers = platform::JSONValue::array();
  for (const auto& [domains, address] : policy.dnsServerSettings) {
    quillet::fuzz::require(platform::isValidUtf8(address));
    servers.push_back({{"assignedDomains", domains}, {"dnsServerIP", address}});
  }
  return {{"status", policy.status}, {"dnsServerSettings", servers}};
}

}  // namespace

void quillet::fuzz::run(platform::DataView input) {
  const auto policy = WhitelistedDomains::decode(input);
  if (!policy) {
    return require(!policy.error().text().empty());
  }
  const auto json = jsonOf(*policy);
  const auto text = json.dump();
  const auto again = WhitelistedDomains::decode(platform::bytesOf(text));
  require(again && jsonOf(*again) == json);
}
