#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/base/Description.h"
#include "platform/flowhost/ResolvConf.h"

namespace platform {
namespace {

TEST(ResolvConfTest, TakesTheNameserverLines) {
  const struct {
    const char* text;
    std::vector<std::string> servers;
  } rows[] = {
      {"", {}},
      {"nameserver 127.0.0.53", {"127.0.0.53"}},
      {"nameserver\t1.1.1.1\nnameserver  \t 2606:4700::1111\n", {"1.1.1.1", "2606:4700::1111"}},
      {"# nameserver 1.1.1.1\n;nameserver 2.2.2.2\nnameserver 3.3.3.3 # third\n", {"3.3.3.3"}},
      {"search example.com\noptions edns0\nnameserver fe80::1%eth0\r\n", {"fe80::1%eth0"}},
      {" nameserver 1.1.1.1\nnameservers 2.2.2.2\nnameserver3.3.3.3\nNameserver 4.4.4.4\n", {}},
      {"nameserver\nnameserver \nnameserver  \t\n\n\nnameserver 5.5.5.5", {"5.5.5.5"}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(dnsSettingsFrom(row.text).servers, row.servers) << row.text;
  }
  EXPECT_EQ(description(NEDNSSettings{{"1.1.1.1"}}), R"(NEDNSSettings(servers: ["1.1.1.1"]))");
}

}  // namespace
}  // namespace platform
