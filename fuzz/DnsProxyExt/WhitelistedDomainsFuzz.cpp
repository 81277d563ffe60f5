// An answer that was read holds nothing but text, and reads the same from its own members written
// anew.

#include "DnsProxyExt/upstream/WhitelistedDomains.h"
#include "fuzz/Require.h"
#include "platform/base/Utf8.h"
#include "platform/store/JSONValue.h"

namespace {

using quillet::WhitelistedDomains;
using quillet::fuzz::require;

platform::JSONValue jsonOf(const WhitelistedDomains& policy) {
  auto servers = platform::JSONValue::array();
  for (const auto& [domains, address] : policy.dnsServerSettings) {
    require(platform::isValidUtf8(address));
    servers.push_back({{"assignedDomains", domains}, {"dnsServerIP", address}});
  }
  return {{"status", policy.status}, {"dnsServerSettings", servers}};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto policy = WhitelistedDomains::decode({data, size});
  if (!policy) {
    require(!policy.error().text().empty());
    return 0;
  }
  const auto json = jsonOf(*policy);
  const auto text = json.dump();
  const auto again = WhitelistedDomains::decode(platform::bytesOf(text));
  require(again && jsonOf(*again) == json);
  return 0;
}
