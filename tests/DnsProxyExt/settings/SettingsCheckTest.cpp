#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DnsProxyExt/settings/SettingsCheck.h"
#include "platform/base/Description.h"
#include "tests/support/LogCapture.h"

namespace quillet {
namespace {

using Lines = std::vector<std::string>;

bool isOwn(const platform::SocketAddress& address) {
  return platform::description(address) == "127.0.0.1:5300";
}

Lines linesOf(const std::vector<SettingsFinding>& findings) {
  Lines lines;
  for (const auto& [key, what] : findings) {
    lines.emplace_back(key).append(": ").append(what);
  }
  return lines;
}

constexpr char kNoServer[] = " is no IPv4 address with an optional port from 1 to 65535";

TEST(SettingsCheckTest, TellsWhatIsWrongWithVendorData) {
  const std::pair<const char*, Lines> rows[] = {
      {R"({"filteringDNS": "10.0.0.1", "--secondDNS": "10.0.0.2:1", "localNetworkDNS":
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
      {R"({"secondDNS": "10.0.0.256"})", {std::string(R"(secondDNS: "10.0.0.256")") + kNoServer}},
      {R"({"secondDNS": "dns\n"})", {std::string(R"(secondDNS: "dns\n")") + kNoServer}},
      {R"({"secondDNS": ""})", {std::string(R"(secondDNS: "")") + kNoServer}},
      {R"({"secondDNS": "::1"})", {std::string(R"(secondDNS: "::1")") + kNoServer}},
      {R"({"policyServer": "10.0.0.1:"})",
       {std::string(R"(policyServer: "10.0.0.1:")") + kNoServer}},
      {R"({"policyServer": "10.0.0.1:0"})",
       {std::string(R"(policyServer: "10.0.0.1:0")") + kNoServer}},
      {R"({"policyServer": "10.0.0.1:65536"})",
       {std::string(R"(policyServer: "10.0.0.1:65536")") + kNoServer}},
      {R"({"policyServer": "10.0.0.1:53:53"})",
       {std::string(R"(policyServer: "10.0.0.1:53:53")") + kNoServer}},
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
        std::string(R"(mappedDomains: fragment "c": "10.0.0.3:x")") + kNoServer,
        R"(mappedDomains: fragment "d": "127.0.0.1:5300" is the proxy's own address)"}},
      {R"({"mappedDomains": "a:10.0.0.11"})",
       {"mappedDomains: not in brackets: the first and the last character are dropped",
        R"(mappedDomains: fragment "" is dropped: it matches nothing)"}},
      {R"({"mappedDomains": "[]", "--mappedDomains": ""})", {}},
  };
  const test::LogCapture log;
  for (const auto& [text, expected] : rows) {
    const auto document = platform::parseJSON(text);
    EXPECT_EQ(linesOf(checkVendorData(document.value(), isOwn)), expected) << text;
  }
  EXPECT_THAT(log.records(), testing::IsEmpty());
}

TEST(SettingsCheckTest, TellsWhatIsWrongWithUserDefaults) {
  const auto document = platform::parseJSON(
      R"({"send_ip": "no", "ip": 1, "send_timezone": true, "userEmail": {}, "mdmConf": "x",
          "sendIp": true, "ofAnotherProgram": 1, "n": 1e999})");
  EXPECT_EQ(linesOf(checkGroupDefaults(document.value())),
            (Lines{"n: left out: a number too large", "ip: not text but of type number",
                   "mdmConf: not object but of type string",
                   "sendIp: unknown key; probably meant: send_ip",
                   "send_ip: not true or false but of type string",
                   "send_timezone: not number but of type boolean",
                   "userEmail: not text but of type object"}));
  const auto fine = platform::parseJSON(
      R"({"send_ip": false, "ip": "", "send_timezone": 0.5, "userEmail": "", "mdmConf": {}})");
  EXPECT_EQ(linesOf(checkGroupDefaults(fine.value())), Lines());
}

}  // namespace
}  // namespace quillet
