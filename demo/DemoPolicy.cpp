#include "demo/DemoPolicy.h"

namespace quillet {

std::optional<std::string_view> organizationOf(platform::DataView request) {
  constexpr std::string_view kPrefix = R"({"function": "localDNSMap","companyId": ")";
  constexpr std::string_view kSuffix = R"("})";
  auto text = platform::textOf(request);
  if (!text.starts_with(kPrefix) || !text.substr(kPrefix.size()).ends_with(kSuffix)) {
    return std::nullopt;
  }
  text.remove_prefix(kPrefix.size());
  text.remove_suffix(kSuffix.size());
  return text;
}

std::string policyFor(const std::string& server) {
  return std::string(R"({"status": true, "dnsServerSettings": [{"assignedDomains": [")")
      .append(kMappedDomain)
      .append(R"("], "dnsServerIP": ")")
      .append(server)
      .append(R"("}]})");
}

}  // namespace quillet
