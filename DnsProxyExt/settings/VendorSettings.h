#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "DnsProxyExt/routing/RoutingTable.h"
#include "DnsProxyExt/settings/ConfigurationMap.h"
#include "DnsProxyExt/settings/SettingFaults.h"

namespace quillet {

/// The applications that are allowed: a setting, and a list in the object of "jsonVars".
inline constexpr char kAllowPackages[] = "allowPackages";

/// What the vendor's settings decide.
struct VendorSettingsTarget {
  RoutingTable& routing;
  DNSHostRef& policyServer;
  std::vector<std::string>& captivePortalIps;
};

/// One setting that a vendor may make.
struct VendorSetting {
  /// When in a start it takes effect.
  enum class Step {
    /// First of all; without vendor data it is taken back.
    domains,
    /// With or without vendor data.
    always,
    /// With vendor data only; first the servers.
    servers,
    lists,
  };

  std::string_view key;
  /// As the documentation writes it.
  std::string_view form;
  Step step;
  void (*apply)(const ConfigurationMap& conf, const VendorSettingsTarget& target);
  SettingFaults (*faults)(std::string_view text, const IsOwnAddress& isOwn);
};

/// All of them, in the order of the documentation.
std::span<const VendorSetting> vendorSettings();

/// Lets those of one step take effect, also those that `conf` does not hold.
void applyVendorSettings(VendorSetting::Step step, const ConfigurationMap& conf,
                         const VendorSettingsTarget& target);

/// Whether every query goes to the second DNS: "allowAll" is "true", to the letter.
bool allowsAll(const ConfigurationMap& conf);

}  // namespace quillet
