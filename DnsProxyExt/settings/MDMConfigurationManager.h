#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "DnsProxyExt/settings/ConfigurationMap.h"
#include "platform/store/JSONValue.h"

namespace quillet {

/// The identity that goes upstream: an EDNS option code in decimal ("65001") to the option's text.
using ValuesForInject = std::map<std::string, std::string>;

/// Keeps the managed configuration and makes of it the identity that is added to every query for
/// the filtering DNS service. Inside the event loop only.
///
/// Each option of `IdentityOption` is looked for on this ladder; a later rung replaces what an
/// earlier one has found:
///   1. without any configuration, the hard-coded identity and nothing below but 5;
///   2. the configuration, `kConfiguredIdentity`;
///   3. the application, where the configuration has "addAppSenderId";
///   4. the group's user defaults: address and time zone;
///   5. the clock.
class MDMConfigurationManager {
 public:
  static constexpr char kGroupId[] = "group.com.quillet.filteringosx";
  /// The managed-preferences dictionaries in the standard user defaults.
  static constexpr char kFeedbackKey[] = "com.apple.feedback.managed";
  static constexpr char kConfigurationKey[] = "com.apple.configuration.managed";

  /// The keys of the configuration that it reads beside those of `kConfiguredIdentity`.
  static constexpr char kAddAppSenderId[] = "addAppSenderId";
  static constexpr char kUserAuthEnabled[] = "userAuthEnabled";
  static constexpr char kAdminPassword[] = "adminPassword";
  static constexpr char kTestModeEnabled[] = "testModeEnabled";
  static constexpr std::string_view kOtherKeys[] = {kAddAppSenderId, kUserAuthEnabled,
                                                    kAdminPassword, kTestModeEnabled};

  /// The single instance, created on first use.
  static MDMConfigurationManager& shared();

  MDMConfigurationManager();

  /// The text values of the vendor settings, each under its key without any "--". When two keys
  /// become one, the one later in the order of the keys wins.
  static ConfigurationMap buildConfDictionary(const platform::JSONObject& from);

  /// The key of the configuration that a key of the vendor settings becomes.
  static std::string keyFrom(std::string_view vendorKey);

  /// Keeps a configuration and takes the identity from it.
  void initConfigurationForMacOs(const ConfigurationMap& confData);

  /// Takes a configuration, or without one falls back to the hard-coded identity. Values that an
  /// earlier configuration set stay unless this one replaces or removes them.
  void initValues(const std::optional<ConfigurationMap>& confData);

  /// The identity for a query of the application `appSenderId` (its signing identifier), a copy;
  /// the hard-coded identity while there is no configuration.
  std::optional<ValuesForInject> getValuesForInject(std::string_view appSenderId);

  /// The whole identity for a query: the above and the time. It stays until the next call, which
  /// takes over its memory.
  const std::optional<ValuesForInject>& getValuesForQuery(std::string_view appSenderId);

  /// The same without a log line; nothing is kept.
  [[nodiscard]] ValuesForInject identityFor(std::string_view appSenderId) const;

  /// Names the first missing value, or nothing when the configuration is complete.
  [[nodiscard]] std::optional<std::string> checkMDMValues() const;
  /// The configuration's "adminPassword".
  [[nodiscard]] std::optional<std::string> getAdminPassword() const;
  /// Whether the configuration's "testModeEnabled" is "yes", in any letter case.
  [[nodiscard]] bool isTestMode() const;

  /// To be called when the managed preferences changed; logs them, the configuration in use stays.
  void didChange() const;

  [[nodiscard]] const std::optional<ConfigurationMap>& configuration() const {
    return configuration_;
  }
  [[nodiscard]] const ValuesForInject& valuesForInject() const { return valuesForInject_; }

 private:
  /// The group's settings that decide on address and time zone.
  struct GroupSettings;

  static GroupSettings readGroupSettings();
  static bool isUserAuthEnabled(const ConfigurationMap& conf);
  static bool checkOrgId(const ConfigurationMap& conf);
  static ValuesForInject getHardcodedMDMConf();
  const ValuesForInject* valuesForFlow(std::string_view appSenderId);
  void addFlowValues(ValuesForInject& values, std::string_view appSenderId,
                     const GroupSettings& settings) const;

  void initValuesWithoutUserAuth(const ConfigurationMap& conf);
  void initValuesWithUserAuth(const ConfigurationMap& conf);
  [[nodiscard]] const std::string* configured(std::string_view key) const;

  ValuesForInject valuesForInject_;
  std::optional<ValuesForInject> valuesForQuery_;  // of the last query
  std::optional<ConfigurationMap> configuration_;
};

}  // namespace quillet
