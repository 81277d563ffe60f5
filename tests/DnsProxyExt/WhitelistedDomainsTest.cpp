#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DnsProxyExt/WhitelistedDomains.h"

namespace quillet {
namespace {

constexpr char kMissing[] = "The data couldn’t be read because it is missing.";
constexpr char kWrong[] = "The data couldn’t be read because it isn’t in the correct format.";

auto decode(std::string_view text) { return WhitelistedDomains::decode(platform::bytesOf(text)); }

TEST(WhitelistedDomains, SaysWhatIsWrong) {
  const auto settings = [](const std::string& servers) {
    return R"({"status": true, "dnsServerSettings": )" + servers + "}";
  };
  const std::pair<std::string, const char*> rows[] = {
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
  };
  for (const auto& [text, error] : rows) {
    const auto policy = decode(text);
    ASSERT_FALSE(policy) << text;
    EXPECT_EQ(policy.error().text(), error) << text;
  }
}

}  // namespace
}  // namespace quillet
