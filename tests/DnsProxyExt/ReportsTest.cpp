#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using testing::ElementsAre;

class ReportsTest : public test::ProviderTest {};

TEST_F(ReportsTest, ReadsTheParameters) {
  const struct {
    const char* text;
    std::optional<std::int64_t> forLastSecs;
    std::optional<std::string> package;
    bool detailed;
  } rows[] = {
      {"tf_300_d_x.example.", 300, {}, true},
      {"tf_300_d.example.", 300, {}, false},
      {"tf_-5", -5, {}, false},
      {"tf_99999999999999999999", {}, {}, false},
      {"p_a_p_b", {}, "b", false},
      {"p_tf_9", 9, "tf", false},
      {"p_d", {}, "d", true},
      {"p", {}, {}, false},
      {"tf_d", {}, {}, true},
      {"tf_5_tf", 5, {}, false},
      {"p_", {}, "", false},
  };
  for (const auto& row : rows) {
    const auto settings = DnsProxyExt::checkDomainForCommand(row.text);
    EXPECT_EQ(settings.forLastSecs, row.forLastSecs) << row.text;
    EXPECT_EQ(settings.package, row.package) << row.text;
    EXPECT_EQ(settings.detailed, row.detailed) << row.text;
  }
}

TEST_F(ReportsTest, PrintsTheSettings) {
  start(R"({"allowPackages": "a,b", "localNetworkDNS": "10.0.0.3"})"_json);
  const auto before = relayed(5).size();
  provider_->printExtensionSettings();
  const std::string vendor = R"(["allowPackages": "a,b", "localNetworkDNS": "10.0.0.3"])";
  const auto atRelay = relayed(before + 6);
  EXPECT_THAT(std::vector(atRelay.end() - 6, atRelay.end()),
              ElementsAre("systemDnsSettings: nil", "vendorData: Optional(" + vendor + ")",
                          "options: Optional([\"VendorData\": " + vendor + "])",
                          "macosConfig options: " + vendor, R"(whitelistedApps: ["a", "b"])",
                          "localNetworkDNS: Optional(10.0.0.3:53), filteringDNS: 127.0.0.2:81, "
                          "secondDNS:127.0.0.3:53"));
}

}  // namespace
}  // namespace quillet
