#include "DnsProxyExt/routing/RoutingTable.h"
#include "tests/DnsProxyExt/StageTest.h"

namespace quillet::test {

TEST(RoutingTable, TheFirstRuleThatAppliesChooses) {
  RoutingTable table;
  table.filteringDNS = hostAt("10.0.0.1:81");
  table.secondDNS = hostAt("10.0.0.2");
  table.localNetworkDNS = hostAt("10.0.0.3");
  table.localDomainsMap = {{"corp.example", hostAt("10.0.0.4")}};
  table.whitelistedDomainsMap = {{"corp.example", hostAt("10.0.0.5")},
                                 {"wiki", hostAt("10.0.0.5")}};
  const std::string toSecond = "connect to 3th part DNS using 10.0.0.2 ";
  const std::string toFiltering = "connect to DNS using Quillet DNS (10.0.0.1:81, q: ";
  using Text = std::optional<std::string>;
  // The line, and what of the rule has matched.
  const std::tuple<const char*, Text, const char*, bool, std::string> rows[] = {
      {"com.apple.NSUpdate.x", "corp.example", "apple", true,
       "connect to local network  DNS using 10.0.0.3 com.apple.nsupdate"},
      {"com.ärzte.browser", "corp.example", "ÄRZTE.B", false, toSecond + "ÄRZTE.B"},
      {"app", "corp.example", "x", true, toSecond},
      {"app", "a.corp.example", "x", false,
       "Mapped to use local DNS server - > connect to local  10.0.0.4:53, q: "
       "Optional(\"a.corp.example\") corp.example"},
      {"app", "mywiki.org", "x", false,
       "Mapped to use whitelisted DNS server - > connect to DNS  10.0.0.5:53, q: "
       "Optional(\"mywiki.org\") wiki"},
      // Letter case counts in domains, an empty entry allows nothing.
      {"app", "WIKI.org", "", false, toFiltering + "Optional(\"WIKI.org\") "},
      {"app", {}, "x", false, toFiltering + "nil "}};
  for (const auto& [application, domain, allowed, allowAll, chosen] : rows) {
    table.allowedApps = {"y", allowed};
    table.shouldAllowAll = allowAll;
    const auto route = table.choose(application, domain);
    EXPECT_EQ(lineOf(route) + " " + route.matched.value_or(""), chosen);
    EXPECT_EQ(isRelayed(route.rule), chosen.find("q: ") == std::string::npos) << chosen;
  }
  table.localNetworkDNS = nullptr;
  EXPECT_EQ(table.choose("com.apple.nsupdate", {}).server, table.filteringDNS);
  table.allowedApps = {"nsupdate"};
  EXPECT_TRUE(table.choose("com.apple.nsupdate", {}).isAllowedApp);
}

TEST(RoutingTable, RoutesByTheNameWithoutWwwAndTheLastDot) {
  expectEach(routedDomain, {{"www.a.www.corp.example.", "a.corp.example"},
                            {"a..", "a."},
                            {".", ""},
                            {"WWW.a.", "WWW.a"}});
}

}  // namespace quillet::test
