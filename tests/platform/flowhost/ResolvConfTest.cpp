#include "platform/flowhost/ResolvConf.h"
#include "tests/platform/Test.h"

namespace platform::test {

TEST(ResolvConfTest, TakesTheNameserverLines) {
  const auto servers = [](const std::string& text) {
    return description(dnsSettingsFrom(text).servers);
  };
  EXPECT_EQ(description(dnsSettingsFrom("")), "NEDNSSettings(servers: [])");
  expectEach(
      servers,
      {{"nameserver\t1.1.1.1\nnameserver  \t 2606::1111", R"(["1.1.1.1", "2606::1111"])"},
       {"# nameserver ::1\n;nameserver ::2\nnameserver ::3 # third\n", R"(["::3"])"},
       {"options edns0\nnameserver fe80::1%eth0\r\n", R"(["fe80::1%eth0"])"},
       {" nameserver ::1\nnameservers ::2\nnameserver3.3.3.3\nNameserver ::4\n", "[]"},
       {"nameserver\nnameserver \nnameserver  \t\n\n\nnameserver 5.5.5.5", R"(["5.5.5.5"])"}});
}

}  // namespace platform::test
