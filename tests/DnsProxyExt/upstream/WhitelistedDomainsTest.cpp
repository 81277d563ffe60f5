#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DnsProxyExt/upstream/WhitelistedDomains.h"

namespace quillet {
namespace {

constexpr char kMissing[] = "The data couldn’t be read because it is missing.";
constexpr char kWrong[] = "The data couldn’t be read because it isn’t in the correct format.";

auto decode(std::string_view text) { return WhitelistedDomains::decode(platform::bytesOf(text)); }

const std::string kDeep = std::string(64, '[') + std::string(64, ']');

TEST(WhitelistedDomains, IgnoredMembersMayHoldAnything) {
  const auto policy = decode(R"({"a":)" + kDeep + R"(,"status":true,"dnsServerSettings":[
      {"note":[1e999],"assignedDomains":["x"],"dnsServerIP":"y","z":{"z":)" +
                             kDeep + "}}]}");
  ASSERT_TRUE(policy);
  EXPECT_TRUE(policy->status);
  ASSERT_EQ(policy->dnsServerSettings.size(), 1U);
  EXPECT_EQ(policy->dnsServerSettings[0].assignedDomains, std::vector<std::string>{"x"});
  EXPECT_EQ(policy->dnsServerSettings[0].dnsServerIP, "y");
}

TEST(WhitelistedDomains, SaysWhatIsWrong) {
  const auto settings = [](const std::string& servers) {
    return R"({"status": true, "dnsServerSettings": )" + servers + "}";
  };
  const std::pair<std::string, std::string> rows[] = {
      {"", kWrong},
      {std::string(65'507, '['), kWrong},
      {"{\"status\": true, \"dnsServerSettings\": [], \"x\": \"\xC3\x28\"}", kWrong},
      {R"({"STATUS": true, "dnsServerSettings": []})", kMissing},
      {R"({"status": null, "dnsServerSettings": []})", kMissing},
      {R"({"status": "true", "dnsServerSettings": []})", kWrong},
      {settings("null"), kMissing},
      {settings("[1]"), kWrong},
      {settings("[null]"), kMissing},
      {settings(R"([{"assignedDomains": []}])"), kMissing},
      {settings(R"([{"assignedDomains": "a", "dnsServerIP": "b"}])"), kWrong},
      {settings(R"([{"assignedDomains": [1], "dnsServerIP": "b"}])"), kWrong},
      {settings(R"([{"assignedDomains": [null], "dnsServerIP": "b"}])"), kMissing},
      {settings(R"([{"assignedDomains": [], "dnsServerIP": 5}])"), kWrong},
      {settings(R"([{"assignedDomains": ["a"], "dnsServerIP": "b"}, 7])"), kWrong},
      {settings(R"([{"assignedDomains": [)" + kDeep + "]}]"),
       "assignedDomains: nested deeper than 64"},
      {settings("[1e999]"), "dnsServerSettings: a number too large"},
      {kDeep + "]", kWrong},
      {"[" + kDeep + "]", "nested deeper than 64"},
  };
  for (const auto& [text, error] : rows) {
    const auto policy = decode(text);
    ASSERT_FALSE(policy) << text;
    EXPECT_EQ(policy.error().text(), error) << text;
  }
}

}  // namespace
}  // namespace quillet
