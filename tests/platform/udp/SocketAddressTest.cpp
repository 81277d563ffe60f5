#include "platform/udp/SocketAddress.h"
#include "tests/platform/Test.h"

namespace platform::test {
namespace {

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
  const std::string wrong[] = {"",
                               "127.1",
                               "1.2.3.4%lo",
                               "1.2.3.4:53",
                               "::1%",
                               "::1%0",
                               "::1%nosuch",
                               "::1%lo%lo",
                               "::1%-1",
                               "::1%4294967296",
                               std::string("127.0.0.1\0x", 11),
                               std::string("::1\0", 4),
                               std::string(100'000, ':'),
                               "::1%" + std::string(100'000, 'x')};
  for (const std::string& text : wrong) {
    EXPECT_FALSE(SocketAddress::parse(text, 1)) << text.substr(0, 40);
  }
}

}  // namespace
}  // namespace platform::test
