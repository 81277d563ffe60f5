#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DnsProxyExt/WhitelistedDomains.h"

namespace quillet {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char kMissing[] = "The data couldn’t be read because it is missing.";
constexpr char kWrong[] = "The data couldn’t be read because it isn’t in the correct format.";

auto decode(std::string_view text) { return WhitelistedDomains::decode(platform::bytesOf(text)); }

TEST(WhitelistedDomains, ReadsServersAndTheirDomains) {
  const auto policy = decode(
      R"({"status": true, "version": 3, "dnsServerSettings": [
            {"assignedDomains": ["wiki.corp", "čr"], "dnsServerIP": "10.0.0.53", "note": null},
            {"dnsServerIP": "10.0.0.54:5353", "assignedDomains": []}]})");
  ASSERT_TRUE(policy);
  EXPECT_TRUE(policy->status);
  ASSERT_THAT(policy->dnsServerSettings, SizeIs(2));
  EXPECT_THAT(policy->dnsServerSettings[0].assignedDomains, ElementsAre("wiki.corp", "čr"));
  EXPECT_EQ(policy->dnsServerSettings[0].dnsServerIP, "10.0.0.53");
  EXPECT_THAT(policy->dnsServerSettings[1].assignedDomains, IsEmpty());
  EXPECT_EQ(policy->dnsServerSettings[1].dnsServerIP, "10.0.0.54:5353");
}

TEST(WhitelistedDomains, SaysWhatIsWrong) {
  const struct {
    const char* text;
    const char* error;
  } rows[] = {
      {"", kWrong},
      {"no JSON", kWrong},
      {"{\"status\": true, \"dnsServerSettings\": [], \"x\": \"\xC3\x28\"}", kWrong},
      {"[]", kWrong},
      {"true", kWrong},
      {"{}", kMissing},
      {R"({"status": true})", kMissing},
      {R"({"dnsServerSettings": []})", kMissing},
      {R"({"status": null, "dnsServerSettings": []})", kMissing},
      {R"({"status": 1, "dnsServerSettings": []})", kWrong},
      {R"({"status": "true", "dnsServerSettings": []})", kWrong},
      {R"({"status": true, "dnsServerSettings": null})", kMissing},
      {R"({"status": true, "dnsServerSettings": {}})", kWrong},
      {R"({"status": true, "dnsServerSettings": [1]})", kWrong},
      {R"({"status": true, "dnsServerSettings": [{}]})", kMissing},
      {R"({"status": true, "dnsServerSettings": [{"assignedDomains": []}]})", kMissing},
      {R"({"status": true, "dnsServerSettings": [{"dnsServerIP": "1.2.3.4"}]})", kMissing},
      {R"({"status": true, "dnsServerSettings": [{"assignedDomains": "a", "dnsServerIP": "b"}]})",
       kWrong},
      {R"({"status": true, "dnsServerSettings": [{"assignedDomains": [1], "dnsServerIP": "b"}]})",
       kWrong},
      {R"({"status": true, "dnsServerSettings": [{"assignedDomains": [null], "dnsServerIP": "b"}]})",
       kMissing},
      {R"({"status": true, "dnsServerSettings": [{"assignedDomains": [], "dnsServerIP": 5}]})",
       kWrong},
      {R"({"status": true, "dnsServerSettings": [{"assignedDomains": ["a"], "dnsServerIP": "b"}, 7]})",
       kWrong},
      {R"({"STATUS": true, "dnsServerSettings": []})", kMissing},
  };
  for (const auto& row : rows) {
    const auto policy = decode(row.text);
    ASSERT_FALSE(policy) << row.text;
    EXPECT_EQ(policy.error().text(), row.error) << row.text;
  }
}

TEST(WhitelistedDomains, RefusesAnAnswerCutAnywhere) {
  const std::string whole =
      R"({"status": true, "dnsServerSettings": [{"assignedDomains": ["a"], "dnsServerIP": "b"}]})";
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(decode(whole.substr(0, length))) << length;
  }
  EXPECT_TRUE(decode(whole));
}

TEST(WhitelistedDomains, BearsTheLargestDatagramAndTheDeepest) {
  EXPECT_FALSE(decode(std::string(65'507, '[')));
  std::string domains = R"("a")";
  for (int i = 0; i < 10'000; ++i) {
    domains += R"(,"a)" + std::to_string(i) + '"';
  }
  const auto policy = decode(R"({"status":true,"dnsServerSettings":[{"assignedDomains":[)" +
                             domains + R"(],"dnsServerIP":"b"}]})");
  ASSERT_TRUE(policy);
  EXPECT_THAT(policy->dnsServerSettings[0].assignedDomains, SizeIs(10'001));
}

}  // namespace
}  // namespace quillet
