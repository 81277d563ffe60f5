#include "DnsProxyExt/upstream/Policy.h"
#include "tests/support/Test.h"

namespace quillet::test {

TEST(Policy, AsksForTheOrganisationAsItIs) {
  EXPECT_EQ(textOf(policyRequest("a\"b\\č")),
            R"({"function": "localDNSMap","companyId": "a"b\č"})");
}

TEST(Policy, IsTakenOrLeavesTheOldOne) {
  const std::string deep = std::string(64, '[') + std::string(64, ']');
  const std::string whole =
      R"(["lab": 10.0.0.54:5353, "wiki.corp": 10.0.0.53:53, "č": 10.0.0.53:53])";
  const std::string updated = " WhitelistedDomains updated: ";
  const std::string missing =
      "JSON decoder, error: The data couldn’t be read because it is missing., ";
  const std::string wrong =
      "JSON decoder, error: The data couldn’t be read because it isn’t in the correct format., ";
  const auto settings = [](const std::string& servers) {
    return R"({"status": true, "dnsServerSettings": )" + servers + "}";
  };
  const std::pair<std::string, std::string> rows[] = {
      {settings(R"([{"assignedDomains": ["wiki.corp", "lab", "č"], "dnsServerIP": "10.0.0.53"},
                    {"dnsServerIP": "10.0.0.54:5353", "assignedDomains": ["lab"]},
                    {"assignedDomains": [], "dnsServerIP": ""}])"),
       updated + whole},
      {R"({"status": false, "dnsServerSettings": []})", updated + whole},
      {settings("[]"), updated + "[:]"},
      // What is of no use may be anything.
      {R"({"a":)" + deep + R"(,"status":true,"dnsServerSettings":[
           {"note":[1e999],"assignedDomains":["x"],"dnsServerIP":"y","z":{"z":)" +
           deep + "}}]}",
       updated + R"(["x": y:53])"},
      {R"({"status": true})", missing},
      {"", wrong},
      {std::string(65'507, '['), wrong},
      {"{\"status\": true, \"dnsServerSettings\": [], \"x\": \"\xC3\x28\"}", wrong},
      {R"({"STATUS": true, "dnsServerSettings": []})", missing},
      {R"({"status": null, "dnsServerSettings": []})", missing},
      {R"({"status": "true", "dnsServerSettings": []})", wrong},
      {settings("null"), missing},
      {settings("[1]"), wrong},
      {settings("[null]"), missing},
      {settings(R"([{"assignedDomains": []}])"), missing},
      {settings(R"([{"assignedDomains": "a", "dnsServerIP": "b"}])"), wrong},
      {settings(R"([{"assignedDomains": [1], "dnsServerIP": "b"}])"), wrong},
      {settings(R"([{"assignedDomains": [null], "dnsServerIP": "b"}])"), missing},
      {settings(R"([{"assignedDomains": ["a"], "dnsServerIP": "b"}, 7])"), wrong},
      {settings(R"([{"assignedDomains": [)" + deep + "]}]"),
       "JSON decoder, error: assignedDomains: nested deeper than 64, "},
      {settings("[1e999]"), "JSON decoder, error: dnsServerSettings: a number too large, "},
      {"[" + deep + "]", "JSON decoder, error: nested deeper than 64, "}};
  const LogCapture log;
  DomainMap map;
  for (const auto& [answer, record] : rows) {
    takePolicy(bytesOf(answer), map);
    EXPECT_EQ(log.records().back(), record) << answer;
    EXPECT_TRUE(!record.starts_with(updated) || record == updated + description(map));
  }
  EXPECT_EQ(description(map), R"(["x": y:53])") << "the last that was taken";
  EXPECT_THAT(log.records(),
              IsSupersetOf({"updateWhitelistedDomains", "updating WhitelistedDomains..."}));
}

}  // namespace quillet::test
