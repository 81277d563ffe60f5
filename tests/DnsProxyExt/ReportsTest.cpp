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
      {"", {}, {}, false},
      {"tf_300_d_x.example.", 300, {}, true},
      {"tf_300_d.example.", 300, {}, false},
      {"tf_abc", {}, {}, false},
      {"tf_300.", {}, {}, false},
      {"tf_-5", -5, {}, false},
      {"tf_99999999999999999999", {}, {}, false},
      {"p_Safari_d", {}, "Safari", true},
      {"p_a_p_b", {}, "b", false},
      {"p_d", {}, "d", true},
      {"p_tf_9", 9, "tf", false},
      {"p", {}, {}, false},
      {"tf", {}, {}, false},
      {"tf_5_tf", 5, {}, false},
      {"p_", {}, "", false},
  };
  for (const auto& row : rows) {
    const auto settings = DnsProxyExt::checkDomainForCommand(row.text);
    EXPECT_EQ(settings.forLastSecs, row.forLastSecs) << row.text;
    EXPECT_EQ(settings.package, row.package) << row.text;
    EXPECT_EQ(settings.detailed, row.detailed) << row.text;
  }
  log_.clear();
  DnsProxyExt::checkDomainForCommand("p_a_b");
  EXPECT_THAT(log_.records(), ElementsAre("got params string: p_a_b", "", ""));
}

TEST_F(ReportsTest, PrintsTheSettings) {
  start(R"({"allowPackages": "a,b"})"_json);
  log_.clear();
  provider_->printExtensionSettings();
  EXPECT_THAT(log_.records(),
              ElementsAre("vendorData: Optional([\"allowPackages\": \"a,b\"])",
                          "options: Optional([\"VendorData\": [\"allowPackages\": \"a,b\"]])",
                          "macosConfig options: [\"allowPackages\": \"a,b\"]",
                          "whitelistedApps: [\"a\", \"b\"]", "systemDnsSettings: nil"));
  const auto atRelay = relayed(11);
  EXPECT_THAT(
      std::vector(atRelay.end() - 6, atRelay.end()),
      ElementsAre("systemDnsSettings: nil", "vendorData: Optional([\"allowPackages\": \"a,b\"])",
                  "options: Optional([\"VendorData\": [\"allowPackages\": \"a,b\"]])",
                  "macosConfig options: [\"allowPackages\": \"a,b\"]",
                  "whitelistedApps: [\"a\", \"b\"]",
                  "localNetworkDNS: nil, filteringDNS: 127.0.0.2:81, secondDNS:127.0.0.3:53"));
  provider_->localNetworkDNS = std::make_shared<Utils::DNSHost>("10.0.0.3:53");
  provider_->printExtensionSettings();
  EXPECT_EQ(
      relayed(17).back(),
      "localNetworkDNS: Optional(10.0.0.3:53), filteringDNS: 127.0.0.2:81, secondDNS:127.0.0.3:53");
}

}  // namespace
}  // namespace quillet
