#include "DnsProxyExt/settings/MDMConfigurationManager.h"
#include "platform/store/JSONValue.h"
#include "tests/platform/EnvironmentVariable.h"
#include "tests/support/DefaultsFolder.h"
#include "tests/support/Test.h"

namespace quillet::test {

class MDMConfigurationManagerTest : public testing::Test {
 protected:
  const platform::test::EnvironmentVariable zone_{"TZ", "Europe/Ljubljana"};
  LogCapture log_;
  DefaultsFolder defaults_;
  MDMConfigurationManager manager_;
};

TEST_F(MDMConfigurationManagerTest, KeepsTextsAndStripsDashes) {
  const auto conf = MDMConfigurationManager::buildConfDictionary(
      {{"--userId", "u1"}, {"a--b--", "x"}, {"ttl", 60}, {"none", nullptr}});
  EXPECT_EQ(conf, (ConfigurationMap{{"userId", "u1"}, {"ab", "x"}}));
  EXPECT_THAT(log_.records(),
              ElementsAre("init MDMConfigurationManager", "key:--userId: Optional(\"u1\")",
                          "key:a--b--: Optional(\"x\")", "key:none: nil", "key:ttl: Optional(60)"));
}

TEST_F(MDMConfigurationManagerTest, IsHardcodedWithoutAConfiguration) {
  const ValuesForInject hardcoded{{"65001", "administrator@quillet.example"},
                                  {"65003", "127.0.0.1"},
                                  {"65004", "127.0.0.1"},
                                  {"65005", "com.hardcoded.app"},
                                  {"65006", "Europe/Ljubljana"}};
  EXPECT_EQ(manager_.getValuesForInject("com.example.app"), hardcoded);
  EXPECT_EQ(manager_.checkMDMValues(), "The app has not received values from MDM");
  log_.clear();
  manager_.initValues(std::nullopt);
  EXPECT_EQ(manager_.valuesForInject(), hardcoded);
  EXPECT_THAT(log_.records(),
              ElementsAre("init edns values confData = nil", "getHardcodedMDMConf",
                          "**Can not read MDM configuration. Will use hardcoded values**"));
}

TEST_F(MDMConfigurationManagerTest, TakesTheIdentityAndNamesTheFirstMissingValue) {
  const std::string missing = "Optional(\"The app has not received values from MDM\")";
  const std::string organization = "Optional(\"OrganizationId value is not found.\")";
  const std::string user = "Optional(\"UserId is not found.\")";
  const std::tuple<platform::JSONValue, ValuesForInject, std::string> rows[] = {
      {R"({})"_json, {}, missing},
      {R"({"organizationId": "o", "orgUnitId": "ou", "userId": "u", "ttl": "5", "serialNumber": "s"})"_json,
       {{"65001", "o"}, {"65002", "ou"}, {"65003", "u"}, {"65010", "5"}, {"65011", "s"}},
       "nil"},
      {R"({"organizationId": "o", "userEmail": "e"})"_json, {{"65001", "o"}, {"65003", "e"}}, user},
      {R"({"userEmail": "e", "userId": "u"})"_json, {{"65003", "u"}}, organization},
      {R"({"orgUnitId": "", "userId": "", "organizationId": "", "ttl": ""})"_json,
       {{"65001", ""}, {"65010", ""}},
       organization},
      {R"({"userAuthEnabled": "FALSE", "organizationId": "o", "userId": "u"})"_json,
       {{"65001", "o"}, {"65010", "60"}},
       "nil"},
      {R"({"userAuthEnabled": "false", "ttl": "", "serialNumber": ""})"_json,
       {{"65010", ""}, {"65011", ""}},
       organization},
      {R"({"addAppSenderId": "YES"})"_json, {{"65005", "com.example.app"}}, organization},
      {R"({"addAppSenderId": "true"})"_json, {}, organization}};
  for (const auto& [conf, identity, incomplete] : rows) {
    MDMConfigurationManager manager;
    manager.initConfigurationForMacOs(conf.get<ConfigurationMap>());
    ValuesForInject expected{{"65004", "127.0.0.1"}, {"65006", "Europe/Ljubljana"}, {"65007", "1"}};
    expected.insert(identity.begin(), identity.end());
    EXPECT_EQ(manager.getValuesForInject("com.example.app"), expected) << conf;
    EXPECT_EQ(description(manager.checkMDMValues()), incomplete) << conf;
  }
  manager_.initConfigurationForMacOs({{"adminPassword", "p"}, {"testModeEnabled", "Yes"}});
  EXPECT_EQ(manager_.getAdminPassword(), "p");
  EXPECT_TRUE(manager_.isTestMode());
}

TEST_F(MDMConfigurationManagerTest, KeepsWhatALaterConfigurationDoesNotName) {
  manager_.initConfigurationForMacOs(
      {{"organizationId", "o"}, {"userId", "u"}, {"orgUnitId", "ou"}, {"serialNumber", "s"}});
  manager_.initConfigurationForMacOs({{"userAuthEnabled", "false"}});
  manager_.initConfigurationForMacOs({{"orgUnitId", ""}});
  EXPECT_EQ(description(manager_.valuesForInject()),
            R"(["65003": "u", "65010": "60", "65011": "s"])");
}

TEST_F(MDMConfigurationManagerTest, FollowsTheGroupDefaults) {
  manager_.initConfigurationForMacOs({});
  const std::string address = R"("65004": "127.0.0.1")";
  const std::string zone = R"("65006": "Europe/Ljubljana")";
  const std::pair<const char*, std::string> rows[] = {
      {R"({"send_ip": false})", zone},
      {R"({"send_ip": true, "ip": "192.0.2.7"})", R"("65004": "192.0.2.7", )" + zone},
      {R"({"send_ip": "false", "ip": 7})", address + ", " + zone},
      {R"({"send_timezone": 1})", address},
      {R"({"send_timezone": -4})", address},
      {R"({"send_timezone": 2})", address + ", " + zone},
      {R"(not JSON)", address + ", " + zone}};
  for (const auto& [defaults, expected] : rows) {
    defaults_.write(defaults);
    EXPECT_EQ(description(manager_.getValuesForInject("app").value()),
              "[" + expected + R"(, "65007": "1"])")
        << defaults;
  }
}

}  // namespace quillet::test
