#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DnsProxyExt/upstream/Policy.h"
#include "platform/base/Description.h"
#include "tests/support/LogCapture.h"

namespace quillet {
namespace {

constexpr char kPolicy[] =
    R"({"status": true, "version": 3, "dnsServerSettings": [
         {"assignedDomains": ["wiki.corp", "lab", "č"], "dnsServerIP": "10.0.0.53", "note": null},
         {"dnsServerIP": "10.0.0.54:5353", "assignedDomains": ["lab"]},
         {"assignedDomains": [], "dnsServerIP": ""}]})";
constexpr char kPolicyMap[] =
    R"(["lab": 10.0.0.54:5353, "wiki.corp": 10.0.0.53:53, "č": 10.0.0.53:53])";

TEST(Policy, AsksForTheOrganisationAsItIs) {
  EXPECT_EQ(platform::textOf(policyRequest("a\"b\\č")),
            R"({"function": "localDNSMap","companyId": "a"b\č"})");
}

TEST(Policy, IsTakenOrLeavesTheOldOne) {
  const test::LogCapture log;
  const std::string updated = " WhitelistedDomains updated: ";
  const struct {
    std::string answer;
    std::string map;
    std::string record;
  } rows[] = {
      {kPolicy, kPolicyMap, updated + kPolicyMap},
      {R"({"status": false, "dnsServerSettings": []})", kPolicyMap, updated + kPolicyMap},
      {R"({"status": true})", kPolicyMap,
       "JSON decoder, error: The data couldn’t be read because it is missing., "},
      {R"({"status": true, "dnsServerSettings": []})", "[:]", updated + "[:]"},
  };
  DomainMap map;
  for (const auto& row : rows) {
    takePolicy(platform::bytesOf(row.answer), map);
    EXPECT_EQ(platform::description(map), row.map) << row.answer;
    EXPECT_EQ(log.records().back(), row.record);
  }
  EXPECT_THAT(log.records(), testing::Contains("updating WhitelistedDomains..."));
}

}  // namespace
}  // namespace quillet
