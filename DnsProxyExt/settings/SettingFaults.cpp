#include "DnsProxyExt/settings/SettingFaults.h"

#include <cstdint>
#include <limits>
#include <map>
#include <optional>

#include "DnsProxyExt/routing/MappedDomains.h"
#include "DnsProxyExt/settings/VendorSettings.h"
#include "platform/base/CommaDelimited.h"
#include "platform/base/DecimalText.h"
#include "platform/base/Description.h"
#include "platform/store/JSONDocument.h"

namespace quillet {

using platform::SocketAddress;

namespace {

std::string inQuotes(std::string_view text) {
  std::string out;
  platform::debugDescribe(out, text);
  return out;
}

/// The provider lets a port that it cannot read be 53; here it counts as none.
std::optional<std::int64_t> portIn(std::string_view text, const Utils::DNSHost& server) {
  const bool hasPort = text.size() > server.address.size();
  return hasPort ? platform::decimalInteger(text.substr(server.address.size() + 1)) : server.port;
}

std::optional<SocketAddress> addressOf(std::string_view text) {
  const Utils::DNSHost server(text);
  const auto port = portIn(text, server).value_or(0);
  if (port < 1 || port > std::numeric_limits<std::uint16_t>::max()) {
    return std::nullopt;
  }
  return SocketAddress::parse(server.address, static_cast<std::uint16_t>(port));
}

std::optional<std::string> serverFault(std::string_view text, const IsOwnAddress& isOwn) {
  const auto address = addressOf(text);
  if (!address) {
    return inQuotes(text) + " is no IPv4 address with an optional port from 1 to 65535";
  }
  if (isOwn(*address)) {
    return inQuotes(text) + " is the proxy's own address";
  }
  return std::nullopt;
}

std::optional<std::string> blankFault(std::string_view entry) {
  if (entry.empty() || (entry.front() != ' ' && entry.back() != ' ')) {
    return std::nullopt;
  }
  return inQuotes(entry) + " has a blank around it, which would have to be met too";
}

bool isInBrackets(std::string_view text) {
  return text.size() > 1 && text.front() == '[' && text.back() == ']';
}

/// How often each fragment stands.
std::map<std::string_view, int> countsOf(const std::vector<MappedDomain>& entries) {
  std::map<std::string_view, int> counts;
  for (const auto& entry : entries) {
    counts[entry.fragment] += entry.server ? 1 : 0;
  }
  return counts;
}

/// Why an entry maps nothing, if so; `later` is how many of the same fragment follow.
std::optional<std::string> dropOf(const MappedDomain& entry, int later) {
  const auto fragment = inQuotes(entry.fragment);
  if (!entry.server) {
    return "fragment " + fragment + " is dropped: no server follows";
  }
  if (entry.fragment.empty()) {
    return "fragment " + fragment + " is dropped: it matches nothing";
  }
  if (later > 0) {
    return "fragment " + fragment + " is dropped: it stands again further on";
  }
  return std::nullopt;
}

}  // namespace

SettingFaults faultsOfServer(std::string_view text, const IsOwnAddress& isOwn) {
  const auto fault = serverFault(text, isOwn);
  return fault ? SettingFaults{*fault} : SettingFaults{};
}

SettingFaults faultsOfMappedDomains(std::string_view text, const IsOwnAddress& isOwn) {
  SettingFaults faults;
  if (!text.empty() && !isInBrackets(text)) {
    faults.emplace_back("not in brackets: the first and the last character are dropped");
  }
  const auto entries = mappedDomainsIn(text);
  auto counts = countsOf(entries);
  for (const auto& entry : entries) {
    if (auto drop = dropOf(entry, entry.server ? --counts[entry.fragment] : 0)) {
      faults.push_back(*std::move(drop));
    } else if (const auto wrong = serverFault(*entry.server, isOwn)) {
      faults.push_back("fragment " + inQuotes(entry.fragment) + ": " + *wrong);
    } else if (const auto blank = blankFault(entry.fragment)) {
      faults.push_back("fragment " + *blank);
    }
  }
  return faults;
}

SettingFaults faultsOfSwitch(std::string_view text, const IsOwnAddress& /*isOwn*/) {
  if (text == "true" || text == "false") {
    return {};
  }
  return {inQuotes(text) + R"( is neither "true" nor "false")"};
}

SettingFaults faultsOfAddresses(std::string_view text, const IsOwnAddress& /*isOwn*/) {
  SettingFaults faults;
  for (const auto& address : platform::parseCommaDelimitedArr(text)) {
    if (!SocketAddress::parse(address, 0)) {
      faults.push_back(inQuotes(address) + " is no IP address");
    }
  }
  return faults;
}

SettingFaults faultsOfApplications(std::string_view text, const IsOwnAddress& /*isOwn*/) {
  SettingFaults faults;
  for (const auto& entry : platform::parseCommaDelimitedArr(text)) {
    if (auto fault = blankFault(entry)) {
      faults.push_back(*std::move(fault));
    }
  }
  return faults;
}

SettingFaults faultsOfJsonVars(std::string_view text, const IsOwnAddress& /*isOwn*/) {
  if (text.empty()) {
    return {};
  }
  const auto json = platform::parseJSON(text);
  if (!json) {
    return {platform::textOf(json.error())};
  }
  if (!json->value.is_object()) {
    return {"no JSON object"};
  }
  const std::string list = kAllowPackages;
  if (const auto fault = json->faultOf(json->value.get_ref<const platform::JSONObject&>(), list)) {
    return {list + " is left out: " + platform::textOf(*fault)};
  }
  const bool isFine = !json->value.contains(list) || json->value[list].is_array();
  return isFine ? SettingFaults{} : SettingFaults{list + " is no array"};
}

}  // namespace quillet
