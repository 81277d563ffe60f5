#include "DnsProxyExt/settings/MDMConfigurationManager.h"

#include <DeploymentValues.h>

#include <algorithm>
#include <iterator>

#include "DnsProxyExt/settings/GroupDefaults.h"
#include "DnsProxyExt/settings/IdentityOption.h"
#include "platform/base/Clock.h"
#include "platform/base/LetterCase.h"
#include "platform/base/RemoveOccurrences.h"
#include "platform/log/NSLog.h"
#include "platform/store/TimeZone.h"
#include "platform/store/UserDefaults.h"

namespace quillet {

using platform::NSLog;
using platform::NSLogStep;

namespace {

constexpr char kLoopbackAddress[] = "127.0.0.1";
constexpr char kDefaultTtl[] = "60";
// What "send_timezone" counts as when the suite cannot be opened; any value but 1 and the negative
// sends.
constexpr std::int64_t kSendTimeZone = 2;

ValuesForInject hardcodedIdentity() {
  return {{IdentityOption::kApplication, "com.hardcoded.app"},
          {IdentityOption::kOrganization, deployment::kAdministratorEmail},
          {IdentityOption::kAddress, kLoopbackAddress},
          {IdentityOption::kTimeZone, "Europe/Ljubljana"},
          {IdentityOption::kUser, kLoopbackAddress}};
}

const ConfiguredIdentity* identityNamed(std::string_view key) {
  const auto* const found =
      std::find_if(std::begin(kConfiguredIdentity), std::end(kConfiguredIdentity),
                   [&](const ConfiguredIdentity& row) { return row.key == key; });
  return found != std::end(kConfiguredIdentity) ? found : nullptr;
}

std::string millisecondsSince1970() {
  const double seconds = platform::secondsSince1970();
  return std::to_string(static_cast<std::int64_t>(seconds * 1000.0));
}

}  // namespace

struct MDMConfigurationManager::GroupSettings {
  std::optional<bool> sendIp;
  std::optional<std::string> ip;
  std::int64_t sendTimeZone = kSendTimeZone;
};

MDMConfigurationManager& MDMConfigurationManager::shared() {
  static MDMConfigurationManager instance;
  return instance;
}

MDMConfigurationManager::MDMConfigurationManager() { NSLog("init MDMConfigurationManager"); }

ConfigurationMap MDMConfigurationManager::buildConfDictionary(const platform::JSONObject& from) {
  ConfigurationMap result;
  for (const auto& [key, value] : from) {
    const auto present = value.is_null() ? std::nullopt : std::optional(value);
    NSLog("key:", key, ": ", present);
    if (value.is_string()) {
      result.insert_or_assign(keyFrom(key), value.get<std::string>());
    }
  }
  return result;
}

std::string MDMConfigurationManager::keyFrom(std::string_view vendorKey) {
  return platform::removingOccurrences(vendorKey, "--");
}

void MDMConfigurationManager::initConfigurationForMacOs(const ConfigurationMap& confData) {
  NSLog("initConfigurationForMacOs, confData = ", confData);
  initValues(confData);
}

void MDMConfigurationManager::initValues(const std::optional<ConfigurationMap>& confData) {
  NSLog("init edns values confData = ", confData);
  if (!confData) {
    valuesForInject_ = getHardcodedMDMConf();
    NSLog("**Can not read MDM configuration. Will use hardcoded values**");
    return;
  }
  configuration_ = confData;
  if (isUserAuthEnabled(*confData)) {
    NSLog("userAuthEnabled = true");
    initValuesWithUserAuth(*confData);
  } else {
    NSLog("userAuthEnabled = false");
    initValuesWithoutUserAuth(*confData);
  }
}

void MDMConfigurationManager::initValuesWithoutUserAuth(const ConfigurationMap& conf) {
  if (const auto* organization = settingIn(conf, "organizationId")) {
    valuesForInject_[IdentityOption::kOrganization] = *organization;
  } else {
    valuesForInject_.erase(IdentityOption::kOrganization);
  }
  const auto* ttl = settingIn(conf, "ttl");
  valuesForInject_[IdentityOption::kTtl] = ttl != nullptr ? *ttl : kDefaultTtl;
  if (const auto* serialNumber = settingIn(conf, "serialNumber")) {
    valuesForInject_[IdentityOption::kSerialNumber] = *serialNumber;
  }
}

// Visits the entries in the order of their keys, so where both name the user, "userId" has the last
// word over "userEmail".
void MDMConfigurationManager::initValuesWithUserAuth(const ConfigurationMap& conf) {
  for (const auto& [key, value] : conf) {
    const auto* row = identityNamed(key);
    if (row == nullptr) {
      NSLog("conf key = ", key, " is not found");
    } else if (value.empty() && row->isRemovedByEmpty) {
      valuesForInject_.erase(row->code);
    } else {
      valuesForInject_[row->code] = value;
    }
  }
}

/// nullptr while there is no configuration.
const ValuesForInject* MDMConfigurationManager::valuesForFlow(std::string_view appSenderId) {
  NSLogStep("getValuesForInject, configuration = ", configuration_);
  if (!configuration_) {
    return nullptr;
  }
  const auto settings = readGroupSettings();
  NSLogStep("sendIp = ", settings.sendIp);
  NSLogStep("sendTimezone = ", settings.sendTimeZone);
  addFlowValues(valuesForInject_, appSenderId, settings);
  return &valuesForInject_;
}

std::optional<ValuesForInject> MDMConfigurationManager::getValuesForInject(
    std::string_view appSenderId) {
  const auto* values = valuesForFlow(appSenderId);
  return values != nullptr ? *values : getHardcodedMDMConf();
}

const std::optional<ValuesForInject>& MDMConfigurationManager::getValuesForQuery(
    std::string_view appSenderId) {
  if (const auto* values = valuesForFlow(appSenderId)) {
    valuesForQuery_ = *values;
  } else {
    valuesForQuery_ = getHardcodedMDMConf();
  }
  (*valuesForQuery_)[IdentityOption::kTimestamp] = millisecondsSince1970();
  return valuesForQuery_;
}

ValuesForInject MDMConfigurationManager::identityFor(std::string_view appSenderId) const {
  auto values = configuration_ ? valuesForInject_ : hardcodedIdentity();
  if (configuration_) {
    addFlowValues(values, appSenderId, readGroupSettings());
  }
  values[IdentityOption::kTimestamp] = millisecondsSince1970();
  return values;
}

MDMConfigurationManager::GroupSettings MDMConfigurationManager::readGroupSettings() {
  const auto* defaults = platform::UserDefaults::suite(kGroupId);
  if (defaults == nullptr) {
    return {};
  }
  return {defaults->boolForKey(GroupDefault::kSendIp), defaults->stringForKey(GroupDefault::kIp),
          defaults->integerForKey(GroupDefault::kSendTimeZone)};
}

void MDMConfigurationManager::addFlowValues(ValuesForInject& values, std::string_view appSenderId,
                                            const GroupSettings& settings) const {
  const auto* addAppSenderId = configured(kAddAppSenderId);
  if (addAppSenderId != nullptr && platform::equalsIgnoringCase(*addAppSenderId, "yes")) {
    values[IdentityOption::kApplication] = appSenderId;
  }
  values[IdentityOption::kMarker] = "1";
  if (settings.sendIp == false) {
    values.erase(IdentityOption::kAddress);
  } else {
    values[IdentityOption::kAddress] = settings.ip.value_or(kLoopbackAddress);
  }
  if (settings.sendTimeZone == 1 || settings.sendTimeZone < 0) {
    values.erase(IdentityOption::kTimeZone);
  } else {
    values[IdentityOption::kTimeZone] = platform::currentTimeZoneIdentifier();
  }
}

std::optional<std::string> MDMConfigurationManager::checkMDMValues() const {
  if (!configuration_ || configuration_->empty()) {
    return "The app has not received values from MDM";
  }
  if (!checkOrgId(*configuration_)) {
    return "OrganizationId value is not found.";
  }
  if (!isUserAuthEnabled(*configuration_)) {
    return std::nullopt;
  }
  const auto* userId = configured("userId");
  if (userId == nullptr || userId->empty()) {
    return "UserId is not found.";
  }
  return std::nullopt;
}

std::optional<std::string> MDMConfigurationManager::getAdminPassword() const {
  const auto* password = configured(kAdminPassword);
  return password != nullptr ? std::optional(*password) : std::nullopt;
}

bool MDMConfigurationManager::isTestMode() const {
  const auto* testMode = configured(kTestModeEnabled);
  return testMode != nullptr && platform::equalsIgnoringCase(*testMode, "yes");
}

void MDMConfigurationManager::didChange() const {
  const auto* defaults = platform::UserDefaults::standard();
  if (defaults == nullptr) {
    return;
  }
  if (const auto configuration = defaults->dictionaryForKey(kConfigurationKey)) {
    NSLog("ex config dic ", *configuration);
  }
  if (const auto feedback = defaults->dictionaryForKey(kFeedbackKey)) {
    NSLog("ex feedbackDict  ", *feedback);
  }
}

bool MDMConfigurationManager::isUserAuthEnabled(const ConfigurationMap& conf) {
  const auto* enabled = settingIn(conf, kUserAuthEnabled);
  return enabled == nullptr || !platform::equalsIgnoringCase(*enabled, "false");
}

bool MDMConfigurationManager::checkOrgId(const ConfigurationMap& conf) {
  const auto* organization = settingIn(conf, "organizationId");
  return organization != nullptr && !organization->empty();
}

ValuesForInject MDMConfigurationManager::getHardcodedMDMConf() {
  NSLogStep("getHardcodedMDMConf");
  return hardcodedIdentity();
}

const std::string* MDMConfigurationManager::configured(std::string_view key) const {
  return configuration_ ? settingIn(*configuration_, key) : nullptr;
}

}  // namespace quillet
