#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "DnsProxyExt/settings/MDMConfigurationManager.h"
#include "tests/support/DefaultsFolder.h"
#include "tests/support/LogCapture.h"

namespace quillet {
namespace {

using testing::ElementsAre;

class MDMConfigurationManagerTest : public testing::Test {
 protected:
  MDMConfigurationManagerTest() { ::setenv("TZ", "Europe/Ljubljana", 1); }
  ~MDMConfigurationManagerTest() override { ::unsetenv("TZ"); }

  test::LogCapture log_;
  test::DefaultsFolder defaults_;
  MDMConfigurationManager manager_;
};

TEST_F(MDMConfigurationManagerTest, KeepsTextsAndStripsDashes) {
  const auto conf = MDMConfigurationManager::buildConfDictionary({
      {"--userId", "u1"},
      {"a--b--", "x"},
      {"ttl", 60},
      {"none", nullptr},
  });
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

TEST_F(MDMConfigurationManagerTest, TakesTheIdentityFromTheConfiguration) {
  const struct {
    const char* what;
    ConfigurationMap conf;
    ValuesForInject identity;  // besides what is always there
  } rows[] = {
      {"everything",
       {{"organizationId", "o"},
        {"orgUnitId", "ou"},
        {"userId", "u"},
        {"ttl", "5"},
        {"serialNumber", "s"}},
       {{"65001", "o"}, {"65002", "ou"}, {"65003", "u"}, {"65010", "5"}, {"65011", "s"}}},
      {"an e-mail for the user", {{"userEmail", "e"}}, {{"65003", "e"}}},
      {"userId before userEmail", {{"userEmail", "e"}, {"userId", "u"}}, {{"65003", "u"}}},
      {"empty values",
       {{"orgUnitId", ""}, {"userId", ""}, {"organizationId", ""}, {"ttl", ""}},
       {{"65001", ""}, {"65010", ""}}},
      {"no user authentication",
       {{"userAuthEnabled", "FALSE"}, {"organizationId", "o"}, {"userId", "u"}},
       {{"65001", "o"}, {"65010", "60"}}},
      {"no user authentication, empty ttl and serial number",
       {{"userAuthEnabled", "false"}, {"ttl", ""}, {"serialNumber", ""}},
       {{"65010", ""}, {"65011", ""}}},
      {"the application", {{"addAppSenderId", "YES"}}, {{"65005", "com.example.app"}}},
      {"not the application", {{"addAppSenderId", "true"}}, {}},
  };
  for (const auto& row : rows) {
    MDMConfigurationManager manager;
    manager.initConfigurationForMacOs(row.conf);
    ValuesForInject expected{{"65004", "127.0.0.1"}, {"65006", "Europe/Ljubljana"}, {"65007", "1"}};
    expected.insert(row.identity.begin(), row.identity.end());
    EXPECT_EQ(manager.getValuesForInject("com.example.app"), expected) << row.what;
  }
}

TEST_F(MDMConfigurationManagerTest, KeepsWhatALaterConfigurationDoesNotName) {
  manager_.initConfigurationForMacOs(
      {{"organizationId", "o"}, {"userId", "u"}, {"orgUnitId", "ou"}, {"serialNumber", "s"}});
  manager_.initConfigurationForMacOs({{"userAuthEnabled", "false"}});
  manager_.initConfigurationForMacOs({{"orgUnitId", ""}});
  EXPECT_THAT(
      manager_.valuesForInject(),
      ElementsAre(std::pair("65003", "u"), std::pair("65010", "60"), std::pair("65011", "s")));
}

TEST_F(MDMConfigurationManagerTest, FollowsTheGroupDefaults) {
  manager_.initConfigurationForMacOs({});
  const std::string zone = "Europe/Ljubljana";
  const std::pair<const char*, ValuesForInject> rows[] = {
      {R"({"send_ip": false})", {{"65006", zone}}},
      {R"({"send_ip": true, "ip": "192.0.2.7"})", {{"65004", "192.0.2.7"}, {"65006", zone}}},
      {R"({"send_ip": "false", "ip": 7})", {{"65004", "127.0.0.1"}, {"65006", zone}}},
      {R"({"send_timezone": 1})", {{"65004", "127.0.0.1"}}},
      {R"({"send_timezone": -4})", {{"65004", "127.0.0.1"}}},
      {R"({"send_timezone": 2})", {{"65004", "127.0.0.1"}, {"65006", zone}}},
      {R"(not JSON)", {{"65004", "127.0.0.1"}, {"65006", zone}}},
  };
  for (auto [defaults, expected] : rows) {
    defaults_.write(defaults);
    expected.emplace("65007", "1");
    EXPECT_EQ(manager_.getValuesForInject("app"), expected) << defaults;
  }
}

TEST_F(MDMConfigurationManagerTest, NamesTheFirstMissingValue) {
  const std::pair<ConfigurationMap, std::optional<std::string>> rows[] = {
      {{}, "The app has not received values from MDM"},
      {{{"organizationId", ""}}, "OrganizationId value is not found."},
      {{{"organizationId", "o"}, {"userEmail", "e"}}, "UserId is not found."},
      {{{"organizationId", "o"}, {"userAuthEnabled", "False"}}, std::nullopt},
      {{{"organizationId", "o"}, {"userId", "u"}}, std::nullopt},
  };
  for (const auto& [conf, missing] : rows) {
    manager_.initConfigurationForMacOs(conf);
    EXPECT_EQ(manager_.checkMDMValues(), missing);
  }
  manager_.initConfigurationForMacOs({{"adminPassword", "p"}, {"testModeEnabled", "Yes"}});
  EXPECT_EQ(manager_.getAdminPassword(), "p");
  EXPECT_TRUE(manager_.isTestMode());
}

}  // namespace
}  // namespace quillet
