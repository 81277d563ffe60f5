#include "DnsProxyExt/upstream/Policy.h"

#include <memory>
#include <string>

#include "DnsProxyExt/upstream/WhitelistedDomains.h"
#include "platform/log/NSLog.h"

namespace quillet {

using platform::NSLog;

namespace {

DomainMap mapOf(const WhitelistedDomains& policy) {
  DomainMap map;
  for (const auto& [assignedDomains, dnsServerIP] : policy.dnsServerSettings) {
    const auto server = std::make_shared<Utils::DNSHost>(dnsServerIP);
    for (const auto& domain : assignedDomains) {
      map.set(domain, server);
    }
  }
  return map;
}

}  // namespace

platform::Data policyRequest(std::string_view organization) {
  std::string text = R"({"function": "localDNSMap","companyId": ")";
  text.append(organization).append(R"("})");
  return {text.begin(), text.end()};
}

bool takePolicy(platform::DataView answer, DomainMap& whitelisted) {
  NSLog("updateWhitelistedDomains");
  const auto policy = WhitelistedDomains::decode(answer);
  if (!policy) {
    NSLog("JSON decoder, error: ", policy.error(), ", ");
    return false;
  }
  NSLog("updating WhitelistedDomains...");
  if (policy->status) {
    whitelisted = mapOf(*policy);
  }
  NSLog(" WhitelistedDomains updated: ", whitelisted);
  return true;
}

}  // namespace quillet
