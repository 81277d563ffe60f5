#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/Description.h"
#include "platform/networkextension/NEDNSSettings.h"
#include "platform/networkextension/NEProviderStopReason.h"
#include "platform/networkextension/NWHostEndpoint.h"
#include "tests/platform/TemporaryDirectory.h"

namespace platform {
namespace {

using Servers = std::vector<std::string>;

TEST(NEDNSSettingsTest, TakesTheNameserverLines) {
  const struct {
    const char* text;
    Servers servers;
  } rows[] = {
      {"", {}},
      {"nameserver 127.0.0.53", {"127.0.0.53"}},
      {"nameserver 127.0.0.53\n", {"127.0.0.53"}},
      {"nameserver\t1.1.1.1\nnameserver  \t 2606:4700::1111\n", {"1.1.1.1", "2606:4700::1111"}},
      {"# nameserver 1.1.1.1\n;nameserver 2.2.2.2\nnameserver 3.3.3.3 # third\n", {"3.3.3.3"}},
      {"search example.com\noptions edns0\nnameserver fe80::1%eth0\r\n", {"fe80::1%eth0"}},
      {" nameserver 1.1.1.1\nnameservers 2.2.2.2\nnameserver3.3.3.3\nNameserver 4.4.4.4\n", {}},
      {"nameserver\nnameserver \nnameserver  \t\n\n\nnameserver 5.5.5.5", {"5.5.5.5"}},
      {"nameserver not an address\n", {"not"}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(NEDNSSettings::fromResolvConf(row.text).servers, row.servers) << row.text;
  }
}

TEST(NEDNSSettingsTest, PrintedForm) {
  const std::optional<std::vector<NEDNSSettings>> settings{{{{"1.1.1.1", "::1"}}, {}}};
  EXPECT_EQ(
      description(settings),
      R"(Optional([NEDNSSettings(servers: ["1.1.1.1", "::1"]), NEDNSSettings(servers: [])]))");
}

TEST(NEProviderStopReasonTest, PrintedForm) {
  EXPECT_EQ(description(NEProviderStopReason::kUserInitiated), "NEProviderStopReason(rawValue: 1)");
}

TEST(NWHostEndpointTest, PrintedForm) {
  EXPECT_EQ(description(NWHostEndpoint{"127.0.0.1", "53"}), "127.0.0.1:53");
  EXPECT_EQ(description(NWHostEndpoint{"::1", "53"}), "[::1]:53");
  EXPECT_EQ(description(NWHostEndpoint{"fe80::1%lo", "0"}), "[fe80::1%lo]:0");
}

}  // namespace
}  // namespace platform
