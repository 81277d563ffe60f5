#include "DnsProxyExt/settings/SettingsCheck.h"
#include "tests/support/Test.h"

namespace quillet::test {

Texts linesOf(const std::vector<SettingsFinding>& findings) {
  Texts lines;
  for (const auto& [key, what] : findings) {
    lines.emplace_back(key).append(": ").append(what);
  }
  return lines;
}

Texts vendorFindings(const std::string& text) {
  const auto isOwn = [](const auto& address) { return description(address) == "127.0.0.1:5300"; };
  return linesOf(checkVendorData(platform::parseJSON(text).value(), isOwn));
}

TEST(SettingsCheckTest, TellsWhatIsWrongWithVendorData) {
  const LogCapture log;
  expectEach<std::string, Texts>(
      vendorFindings,
      {{R"({"filteringDNS": "10.0.0.1", "--secondDNS": "10.0.0.2:1", "localNetworkDNS":
          "127.0.0.1:5301", "policyServer": "10.0.0.3:65535", "allowAll": "false", "captivePortalIp":
          "10.0.0.4,::1", "mappedDomains": "[corp:10.1.1.1,lab:10.1.1.2:54]", "allowPackages": "a,b",
          "jsonVars": "{}", "organizationId": "", "orgUnitId": "", "userId": "", "userEmail": "",
          "ttl": "", "serialNumber": "", "addAppSenderId": "yes", "userAuthEnabled": "false",
          "adminPassword": "", "testModeEnabled": "yes"})",
        {}},
       {R"({"organisationId": "x"})",
        {"organisationId: unknown key; probably meant: organizationId"}},
       {R"({"--ALLOWALL": "x"})", {"--ALLOWALL: unknown key; probably meant: allowAll"}},
       {R"({"tl": "x", "tt": "x", "x": "x", "": "x"})",
        {": unknown key", "tl: unknown key", "tt: unknown key", "x: unknown key"}},
       {R"({"filterDNS": "x", "filtersDNSx": "x"})",
        {"filterDNS: unknown key; probably meant: filteringDNS", "filtersDNSx: unknown key"}},
       {R"({"ttl": 60, "userId": null, "allowPackages": ["a"]})",
        {"allowPackages: not text but of type array", "ttl: not text but of type number",
         "userId: not text but of type null"}},
       {R"({"ttl": 1e999})", {"ttl: left out: a number too large"}},
       {R"({"secondDNS": "dns\n"})",
        {R"(secondDNS: "dns\n" is no IPv4 address with an optional port from 1 to 65535)"}},
       {R"({"localNetworkDNS": "127.0.0.1:5300"})",
        {R"(localNetworkDNS: "127.0.0.1:5300" is the proxy's own address)"}},
       {R"({"allowAll": "True"})", {R"(allowAll: "True" is neither "true" nor "false")"}},
       {R"({"captivePortalIp": "10.0.0.1:81,"})",
        {R"(captivePortalIp: "10.0.0.1:81" is no IP address)",
         R"(captivePortalIp: "" is no IP address)"}},
       {R"({"mappedDomains": "[a:10.0.0.1,b,:10.0.0.2,a,c:10.0.0.3:x,d:127.0.0.1:5300,a:10.0.0.4]"})",
        {R"(mappedDomains: fragment "a" is dropped: it stands again further on)",
         R"(mappedDomains: fragment "b" is dropped: no server follows)",
         R"(mappedDomains: fragment "" is dropped: it matches nothing)",
         R"(mappedDomains: fragment "a" is dropped: no server follows)",
         R"(mappedDomains: fragment "c": "10.0.0.3:x" is no IPv4 address with an optional port from 1 to 65535)",
         R"(mappedDomains: fragment "d": "127.0.0.1:5300" is the proxy's own address)"}},
       {R"({"mappedDomains": "a:10.0.0.11"})",
        {"mappedDomains: not in brackets: the first and the last character are dropped",
         R"(mappedDomains: fragment "" is dropped: it matches nothing)"}},
       {R"({"mappedDomains": "[a:10.0.0.1, b:10.0.0.2,c :10.0.0.3]", "allowPackages": "a, b,,c ,d e"})",
        {R"(allowPackages: " b" has a blank around it, which would have to be met too)",
         R"(allowPackages: "c " has a blank around it, which would have to be met too)",
         R"(mappedDomains: fragment " b" has a blank around it, which would have to be met too)",
         R"(mappedDomains: fragment "c " has a blank around it, which would have to be met too)"}},
       {R"({"jsonVars": "{"})", {"jsonVars: not valid JSON"}},
       {R"({"jsonVars": "[]"})", {"jsonVars: no JSON object"}},
       {R"({"jsonVars": "{\"allowPackages\": \"a\"}"})", {"jsonVars: allowPackages is no array"}},
       {R"({"jsonVars": "{\"allowPackages\": [1e999]}"})",
        {"jsonVars: allowPackages is left out: a number too large"}},
       {R"({"jsonVars": "{\"allowPackages\": []}", "--jsonVars": 1, "jsonVars--": ""})",
        {"jsonVars: dropped: jsonVars-- stands for the same setting",
         "--jsonVars: not text but of type number"}},
       {R"({"ttl": "1", "ttl": "2", "userId": "", "jsonVars": "{\"a\": 1, \"a\": 2}"})",
        {"ttl: stands twice: the last one counts"}},
       {R"({"mappedDomains": "[]"})", {}}});
  for (const std::string server :
       {"10.0.0.256", "", "::1", "10.0.0.1:", "10.0.0.1:0", "10.0.0.1:65536", "10.0.0.1:53:53"}) {
    EXPECT_THAT(vendorFindings(R"({"policyServer": ")" + server + R"("})"),
                ElementsAre("policyServer: \"" + server +
                            "\" is no IPv4 address with an optional port "
                            "from 1 to 65535"));
  }
  EXPECT_THAT(log.records(), IsEmpty());
}

TEST(SettingsCheckTest, TellsWhatIsWrongWithUserDefaults) {
  const auto document = platform::parseJSON(
      R"({"send_ip": "no", "ip": 1, "send_timezone": true, "userEmail": {}, "mdmConf": "x",
          "sendIp": true, "ofAnotherProgram": 1, "n": 1e999})");
  EXPECT_EQ(linesOf(checkGroupDefaults(document.value())),
            (Texts{"n: left out: a number too large", "ip: not text but of type number",
                   "mdmConf: not object but of type string",
                   "sendIp: unknown key; probably meant: send_ip",
                   "send_ip: not true or false but of type string",
                   "send_timezone: not number but of type boolean",
                   "userEmail: not text but of type object"}));
  const auto fine = platform::parseJSON(
      R"({"send_ip": false, "ip": "", "send_timezone": 0.5, "userEmail": "", "mdmConf": {}})");
  EXPECT_EQ(linesOf(checkGroupDefaults(fine.value())), Texts());
}

}  // namespace quillet::test
