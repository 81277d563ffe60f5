#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "DnsProxyExt/MDMConfigurationManager.h"
#include "tests/support/DefaultsFolder.h"
#include "tests/support/LogCapture.h"

namespace quillet {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class MDMConfigurationManagerTest : public testing::Test {
 protected:
  MDMConfigurationManagerTest() { ::setenv("TZ", "Europe/Ljubljana", 1); }
  ~MDMConfigurationManagerTest() override { ::unsetenv("TZ"); }

  ValuesForInject values(const char* app = "com.example.app") {
    return manager_.getValuesForInject(app).value();
  }

  test::LogCapture log_;
  test::DefaultsFolder defaults_;
  MDMConfigurationManager manager_;
};

const ValuesForInject kHardcoded{{"65001", "administrator@quillet.example"},
                                 {"65003", "127.0.0.1"},
                                 {"65004", "127.0.0.1"},
                                 {"65005", "com.hardcoded.app"},
                                 {"65006", "Europe/Ljubljana"}};

TEST_F(MDMConfigurationManagerTest, KeepsTextsAndStripsDashes) {
  const auto conf = MDMConfigurationManager::buildConfDictionary({
      {"--userId", "u1"},
      {"a--b--", "x"},
      {"ttl", 60},
      {"flag", true},
      {"nested", {{"k", "v"}}},
      {"none", nullptr},
  });
  EXPECT_EQ(conf, (ConfigurationMap{{"userId", "u1"}, {"ab", "x"}}));
  EXPECT_THAT(log_.records(),
              ElementsAre("init MDMConfigurationManager", "key:--userId: Optional(\"u1\")",
                          "key:a--b--: Optional(\"x\")", "key:flag: Optional(true)",
                          "key:nested: Optional([\"k\": \"v\"])", "key:none: nil",
                          "key:ttl: Optional(60)"));
}

TEST_F(MDMConfigurationManagerTest, IsHardcodedBeforeAnyConfiguration) {
  EXPECT_EQ(values(), kHardcoded);
  EXPECT_EQ(manager_.checkMDMValues(), "The app has not received values from MDM");
  EXPECT_EQ(manager_.getAdminPassword(), std::nullopt);
  EXPECT_FALSE(manager_.isTestMode());
}

TEST_F(MDMConfigurationManagerTest, FallsBackWithoutAMap) {
  log_.clear();
  manager_.initValues(std::nullopt);
  EXPECT_EQ(manager_.valuesForInject(), kHardcoded);
  EXPECT_THAT(log_.records(),
              ElementsAre("init edns values confData = nil", "getHardcodedMDMConf",
                          "**Can not read MDM configuration. Will use hardcoded values**"));
}

TEST_F(MDMConfigurationManagerTest, TakesTheIdentityFromTheConfiguration) {
  const ValuesForInject always{
      {"65004", "127.0.0.1"}, {"65006", "Europe/Ljubljana"}, {"65007", "1"}};
  const struct {
    const char* what;
    ConfigurationMap conf;
    ValuesForInject identity;  // besides what is always there
  } rows[] = {
      {"nothing", {}, {}},
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
       {{"userAuthEnabled", "FALSE"},
        {"organizationId", "o"},
        {"userId", "u"},
        {"orgUnitId", "ou"}},
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
    auto expected = always;
    expected.insert(row.identity.begin(), row.identity.end());
    EXPECT_EQ(manager.getValuesForInject("com.example.app"), expected) << row.what;
  }
}

TEST_F(MDMConfigurationManagerTest, KeepsWhatALaterConfigurationDoesNotName) {
  manager_.initConfigurationForMacOs(
      {{"organizationId", "o"}, {"userId", "u"}, {"orgUnitId", "ou"}});
  manager_.initConfigurationForMacOs({{"userAuthEnabled", "false"}});
  EXPECT_THAT(
      manager_.valuesForInject(),
      ElementsAre(std::pair("65002", "ou"), std::pair("65003", "u"), std::pair("65010", "60")));
  manager_.initConfigurationForMacOs({{"orgUnitId", ""}});
  EXPECT_THAT(manager_.valuesForInject(), Not(Contains(testing::Key("65002"))));
}

TEST_F(MDMConfigurationManagerTest, FollowsTheGroupDefaults) {
  manager_.initConfigurationForMacOs({});
  const struct {
    const char* defaults;
    const char* address;   // nullptr: not sent
    const char* timeZone;  // nullptr: not sent
  } rows[] = {
      {R"({})", "127.0.0.1", "Europe/Ljubljana"},
      {R"({"send_ip": false})", nullptr, "Europe/Ljubljana"},
      {R"({"send_ip": true, "ip": "192.0.2.7"})", "192.0.2.7", "Europe/Ljubljana"},
      {R"({"send_ip": "false", "ip": 7})", "127.0.0.1", "Europe/Ljubljana"},
      {R"({"send_timezone": 1})", "127.0.0.1", nullptr},
      {R"({"send_timezone": -4})", "127.0.0.1", nullptr},
      {R"({"send_timezone": 2})", "127.0.0.1", "Europe/Ljubljana"},
      {R"({"send_timezone": "1"})", "127.0.0.1", "Europe/Ljubljana"},
      {R"(not JSON)", "127.0.0.1", "Europe/Ljubljana"},
  };
  const auto find = [](const ValuesForInject& map, const char* key) {
    const auto found = map.find(key);
    return found == map.end() ? std::nullopt : std::optional(found->second);
  };
  for (const auto& row : rows) {
    defaults_.write(row.defaults);
    const auto map = values();
    EXPECT_EQ(find(map, "65004"),
              row.address ? std::optional<std::string>(row.address) : std::nullopt)
        << row.defaults;
    EXPECT_EQ(find(map, "65006"),
              row.timeZone ? std::optional<std::string>(row.timeZone) : std::nullopt)
        << row.defaults;
  }
}

TEST_F(MDMConfigurationManagerTest, LogsWhatItReads) {
  defaults_.write(R"({"send_ip": true, "send_timezone": 3})");
  log_.clear();
  manager_.initConfigurationForMacOs({{"foo", "bar"}});
  manager_.getValuesForInject("a");
  EXPECT_THAT(log_.records(),
              ElementsAre("initConfigurationForMacOs, confData = [\"foo\": \"bar\"]",
                          "init edns values confData = Optional([\"foo\": \"bar\"])",
                          "userAuthEnabled = true", "conf key = foo is not found",
                          "getValuesForInject, configuration = Optional([\"foo\": \"bar\"])",
                          "sendIp = Optional(true)", "sendTimezone = 3"));
}

TEST_F(MDMConfigurationManagerTest, NamesTheFirstMissingValue) {
  const struct {
    ConfigurationMap conf;
    std::optional<std::string> missing;
  } rows[] = {
      {{}, "The app has not received values from MDM"},
      {{{"userId", "u"}}, "OrganizationId value is not found."},
      {{{"organizationId", ""}}, "OrganizationId value is not found."},
      {{{"organizationId", "o"}}, "UserId is not found."},
      {{{"organizationId", "o"}, {"userEmail", "e"}}, "UserId is not found."},
      {{{"organizationId", "o"}, {"userAuthEnabled", "False"}}, std::nullopt},
      {{{"organizationId", "o"}, {"userId", "u"}}, std::nullopt},
  };
  for (const auto& row : rows) {
    manager_.initConfigurationForMacOs(row.conf);
    EXPECT_EQ(manager_.checkMDMValues(), row.missing);
  }
  manager_.initConfigurationForMacOs({{"adminPassword", "p"}, {"testModeEnabled", "Yes"}});
  EXPECT_EQ(manager_.getAdminPassword(), "p");
  EXPECT_TRUE(manager_.isTestMode());
}

}  // namespace
}  // namespace quillet
