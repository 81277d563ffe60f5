#include <fstream>
#include <iterator>

#include "DnsProxyExt/settings/IdentityOption.h"
#include "DnsProxyExt/settings/VendorSettings.h"
#include "platform/store/JSONValue.h"
#include "tests/support/Test.h"

namespace quillet::test {

using Step = VendorSetting::Step;

class VendorSettingsTest : public testing::Test {
 protected:
  void apply(const ConfigurationMap& conf) {
    for (const auto step : {Step::domains, Step::always, Step::servers, Step::lists}) {
      applyVendorSettings(step, conf, {routing_, policyServer_, captivePortalIps_});
    }
  }
  /// All that settings decide, between blanks.
  [[nodiscard]] std::string inForce() const {
    std::string text;
    for (const auto& server :
         {routing_.secondDNS, routing_.filteringDNS, routing_.localNetworkDNS, policyServer_}) {
      text.append(description(server)).append(" ");
    }
    return text + description(captivePortalIps_) + " " + description(routing_.allowedApps) + " " +
           description(routing_.shouldAllowAll) + " " + description(routing_.localDomainsMap);
  }

  LogCapture log_;
  RoutingTable routing_;
  DNSHostRef policyServer_;
  Texts captivePortalIps_;
};

TEST_F(VendorSettingsTest, KeepsWhatNewSettingsDoNotName) {
  EXPECT_EQ(inForce(), "127.0.0.3:53 127.0.0.2:81 127.0.0.4:53 nil [] [] false [:]");
  apply(R"({"secondDNS": "10.0.0.1:54", "filteringDNS": "10.0.0.2", "localNetworkDNS": "10.0.0.3",
            "policyServer": "10.0.0.4:2801", "captivePortalIp": "10.0.0.5,10.0.0.6",
            "allowPackages": "a,b", "allowAll": "true", "mappedDomains": "[corp:10.1.1.1]"})"_json
            .get<ConfigurationMap>());
  const std::string servers = "10.0.0.1:54 10.0.0.2:53 ";
  const std::string portals = R"(["10.0.0.5", "10.0.0.6"] )";
  EXPECT_EQ(inForce(), servers + "10.0.0.3:53 10.0.0.4:2801 " + portals +
                           R"(["a", "b"] true ["corp": 10.1.1.1:53])");
  // Only the exact word allows all.
  apply({{"captivePortalIp", ""}, {"allowAll", "True"}});
  EXPECT_EQ(inForce(), servers + "nil 127.0.0.5:2800 " + portals + "[] false [:]");
}

TEST_F(VendorSettingsTest, TakesTheAllowedAppsFromWhereverTheyAre) {
  const std::tuple<const char*, const char*, Texts> rows[] = {
      {"", "x,y", {"x", "y"}},
      {"no JSON", "x,y", {"x", "y"}},
      {"[1]", "x", {"before"}},
      {"{}", "x", {"before"}},
      {R"({"allowPackages": "a"})", "x", {"before"}},
      {R"({"allowPackages": ["a", 3]})", "x", {"a", "3"}},
      {R"({"n": 1e999, "allowPackages": ["a"]})", "x", {"a"}},
      {R"({"allowPackages": ["a", 1e999]})", "x", {"before"}},
      {"[1e999]", "x", {"before"}}};
  for (const auto& [jsonVars, allowPackages, allowed] : rows) {
    routing_.allowedApps = {"before"};
    apply({{"jsonVars", jsonVars}, {"allowPackages", allowPackages}});
    EXPECT_EQ(routing_.allowedApps, allowed) << jsonVars;
  }
  EXPECT_THAT(log_.records(),
              IsSupersetOf({R"(initVendorSettings2, jsonVars = {"allowPackages": ["a", 3]})",
                            R"(initVendorSettings3, jsonDict = ["allowPackages": ["a", 3]])"}));
}

/// The rows of the document's table with these headings, from the line after its rule on: their
/// first two cells.
std::string documentedRows(const std::string& headings) {
  std::ifstream file(QUILLET_SETTINGS_DOCUMENT);
  std::string line;
  while (std::getline(file, line) && !line.starts_with(headings)) {
  }
  std::getline(file, line);
  std::string rows;
  while (std::getline(file, line) && line.starts_with("| ")) {
    rows.append(line, 0, line.find(" | ", line.find(" | ") + 1)).append("\n");
  }
  return rows;
}

TEST(SettingsDocument, ListsTheVendorSettingsAndTheIdentityOptions) {
  std::string settings;
  for (const auto& setting : vendorSettings()) {
    settings.append("| `").append(setting.key).append("` | ").append(setting.form).append("\n");
  }
  EXPECT_EQ(documentedRows("| key | form |"), settings);
  std::string options;
  for (const auto& option : kIdentityOptions) {
    options.append("| ").append(option.code).append(" | ").append(option.holds).append("\n");
  }
  EXPECT_EQ(documentedRows("| option | holds |"), options);
}

}  // namespace quillet::test
