#include "DnsProxyExt/DnsProxyExt.h"
#include "DnsProxyExt/RelayLog.h"
#include "platform/base/DecimalText.h"
#include "platform/log/NSLog.h"

namespace quillet {

using platform::NSLog;

namespace {

std::vector<std::string_view> splitAtUnderscores(std::string_view text) {
  std::vector<std::string_view> tokens;
  while (true) {
    const auto end = text.find('_');
    tokens.push_back(text.substr(0, end));
    if (end == std::string_view::npos) {
      return tokens;
    }
    text.remove_prefix(end + 1);
  }
}

}  // namespace

// A parameter with nothing after it stays at its default.
ReportSettings DnsProxyExt::checkDomainForCommand(std::string_view domain) {
  NSLog("got params string: ", domain);
  const auto tokens = splitAtUnderscores(domain);
  ReportSettings settings;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const bool hasNext = i + 1 < tokens.size();
    if (tokens[i] == "p") {
      if (hasNext) {
        settings.package = tokens[i + 1];
      }
    } else if (tokens[i] == "tf") {
      if (hasNext) {
        settings.forLastSecs = platform::decimalInteger(tokens[i + 1]);
      }
    } else if (tokens[i] == "d") {
      settings.detailed = true;
    } else {
      NSLog("");
    }
  }
  return settings;
}

void DnsProxyExt::printExtensionSettings() const {
  NSLog("vendorData: ", vendorData);
  NSLog("options: ", options);
  NSLog("macosConfig options: ", macOSconfig);
  NSLog("whitelistedApps: ", allowedApps);
  NSLog("systemDnsSettings: ", systemDNSSettings());
  logAtRelay("systemDnsSettings: ", systemDNSSettings());
  logAtRelay("vendorData: ", vendorData);
  logAtRelay("options: ", options);
  logAtRelay("macosConfig options: ", macOSconfig);
  logAtRelay("whitelistedApps: ", allowedApps);
  const auto localNetwork = localNetworkDNS ? std::optional(*localNetworkDNS) : std::nullopt;
  logAtRelay("localNetworkDNS: ", localNetwork, ", filteringDNS: ", filteringDNS,
             ", secondDNS:", secondDNS);
}

}  // namespace quillet
