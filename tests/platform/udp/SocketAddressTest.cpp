#include "platform/udp/SocketAddress.h"
#include "tests/platform/Test.h"

namespace platform::test {

using namespace std::string_literals;

TEST(SocketAddressTest, ReadsAddressesAndWritesThemAgain) {
  const std::pair<const char*, std::string> rows[] = {
      {"255.255.255.255", "255.255.255.255"},
      {"2001:DB8:0:0::1", "2001:db8::1"},
      {"fe80::1%lo", "fe80::1%lo"},
      {"fe80::1%1", "fe80::1%lo"},
      {"fe80::1%4294967295", "fe80::1%4294967295"},
      {"::ffff:7f00:1", "127.0.0.1"},
  };
  for (const auto& [text, written] : rows) {
    const auto address = SocketAddress::parse(text, 5300);
    ASSERT_TRUE(address) << text;
    EXPECT_EQ(address->host(), written);
    EXPECT_EQ(address->isIPv6(), written.find(':') != std::string::npos) << text;
    EXPECT_EQ(address->port(), 5300) << text;
  }
  const std::string longText(100'000, ':');
  for (const std::string& text :
       {"127.1"s, "::1%"s, "::1%0"s, "::1%nosuch"s, "::1%lo%lo"s, "::1%-1"s, "::1%4294967296"s,
        "127.0.0.1\0x"s, "::1\0"s, longText, "::1%" + longText}) {
    EXPECT_FALSE(SocketAddress::parse(text, 1)) << text.substr(0, 40);
  }
}

}  // namespace platform::test
