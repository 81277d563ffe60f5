#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "DnsProxyExt/settings/IdentityOption.h"
#include "DnsProxyExt/settings/VendorSettings.h"
#include "platform/base/Description.h"
#include "tests/support/LogCapture.h"

namespace quillet {
namespace {

using platform::description;
using testing::ElementsAre;
using Step = VendorSetting::Step;

class VendorSettingsTest : public testing::Test {
 protected:
  void apply(const ConfigurationMap& conf) {
    for (const auto step : {Step::domains, Step::always, Step::servers, Step::lists}) {
      applyVendorSettings(step, conf, {routing_, policyServer_, captivePortalIps_});
    }
  }
  [[nodiscard]] std::vector<std::string> servers() const {
    return {description(routing_.secondDNS), description(routing_.filteringDNS),
            description(routing_.localNetworkDNS), description(policyServer_)};
  }

  test::LogCapture log_;
  RoutingTable routing_;
  DNSHostRef policyServer_;
  std::vector<std::string> captivePortalIps_;
};

TEST_F(VendorSettingsTest, KeepsWhatNewSettingsDoNotName) {
  EXPECT_THAT(servers(), ElementsAre("127.0.0.3:53", "127.0.0.2:81", "127.0.0.4:53", "nil"));
  apply({{"secondDNS", "10.0.0.1:54"},
         {"filteringDNS", "10.0.0.2"},
         {"localNetworkDNS", "10.0.0.3"},
         {"policyServer", "10.0.0.4:2801"},
         {"captivePortalIp", "10.0.0.5,10.0.0.6"},
         {"allowPackages", "a,b"},
         {"allowAll", "true"},
         {"mappedDomains", "[corp:10.1.1.1]"}});
  EXPECT_TRUE(routing_.shouldAllowAll);
  EXPECT_EQ(description(routing_.localDomainsMap), R"(["corp": 10.1.1.1:53])");
  EXPECT_THAT(servers(), ElementsAre("10.0.0.1:54", "10.0.0.2:53", "10.0.0.3:53", "10.0.0.4:2801"));
  apply({{"captivePortalIp", ""}, {"allowAll", "True"}});
  EXPECT_FALSE(routing_.shouldAllowAll) << "only the exact word does";
  EXPECT_THAT(servers(), ElementsAre("10.0.0.1:54", "10.0.0.2:53", "nil", "127.0.0.5:2800"));
  EXPECT_THAT(captivePortalIps_, ElementsAre("10.0.0.5", "10.0.0.6"));
  EXPECT_THAT(routing_.allowedApps, testing::IsEmpty());
  EXPECT_TRUE(routing_.localDomainsMap.empty());
}

TEST_F(VendorSettingsTest, TakesTheAllowedAppsFromWhereverTheyAre) {
  const struct {
    const char* jsonVars;
    const char* allowPackages;
    std::vector<std::string> allowed;
  } rows[] = {
      {"", "x,y", {"x", "y"}},
      {"no JSON", "x,y", {"x", "y"}},
      {"[1]", "x", {"before"}},
      {"{}", "x", {"before"}},
      {R"({"allowPackages": "a"})", "x", {"before"}},
      {R"({"allowPackages": ["a", 3]})", "x", {"a", "3"}},
      {R"({"n": 1e999, "allowPackages": ["a"]})", "x", {"a"}},
      {R"({"allowPackages": ["a", 1e999]})", "x", {"before"}},
      {"[1e999]", "x", {"before"}},
  };
  for (const auto& row : rows) {
    routing_.allowedApps = {"before"};
    apply({{"jsonVars", row.jsonVars}, {"allowPackages", row.allowPackages}});
    EXPECT_EQ(routing_.allowedApps, row.allowed) << row.jsonVars;
  }
  EXPECT_THAT(
      log_.records(),
      testing::IsSupersetOf({R"(initVendorSettings2, jsonVars = {"allowPackages": ["a", 3]})",
                             R"(initVendorSettings3, jsonDict = ["allowPackages": ["a", 3]])"}));
}

/// The first two cells of each row of the table whose first heading is `heading`.
std::vector<std::pair<std::string, std::string>> documentedRows(const std::string& heading) {
  std::ifstream document(QUILLET_SETTINGS_DOCUMENT);
  std::vector<std::pair<std::string, std::string>> rows;
  bool isWithin = false;
  for (std::string line; std::getline(document, line);) {
    const auto first = line.find(" | ");
    if (!line.starts_with("| ") || first == std::string::npos) {
      isWithin = isWithin && line.starts_with("|");
    } else if (isWithin) {
      rows.emplace_back(line.substr(2, first - 2),
                        line.substr(first + 3, line.find(" | ", first + 3) - first - 3));
    } else {
      isWithin = line.starts_with("| " + heading + " |");
    }
  }
  return rows;
}

TEST(SettingsDocument, ListsTheVendorSettingsAndTheIdentityOptions) {
  std::vector<std::pair<std::string, std::string>> settings;
  for (const auto& setting : vendorSettings()) {
    settings.emplace_back("`" + std::string(setting.key) + "`", setting.form);
  }
  EXPECT_EQ(documentedRows("key"), settings);
  std::vector<std::pair<std::string, std::string>> options;
  for (const auto& option : kIdentityOptions) {
    options.emplace_back(option.code, option.holds);
  }
  EXPECT_EQ(documentedRows("option"), options);
}

}  // namespace
}  // namespace quillet
