#include <gtest/gtest.h>

#include <string>

#include "platform/network/SocketAddress.h"

namespace platform {
namespace {

using namespace std::string_literals;

TEST(SocketAddressTest, ReadsAddressesAndWritesThemAgain) {
  const std::pair<const char*, std::string> rows[] = {
      {"255.255.255.255", "255.255.255.255"},
      {"2001:DB8:0:0::1", "2001:db8::1"},
      {"1:2:3:4:5:6:7:8", "1:2:3:4:5:6:7:8"},
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
}

TEST(SocketAddressTest, RefusesWhatIsNoAddress) {
  for (const auto& text : {""s,
                           "127.1"s,
                           "127.0.0.1 "s,
                           "256.0.0.1"s,
                           "2130706433"s,
                           "01.2.3.4"s,
                           "localhost"s,
                           "[::1]"s,
                           ":::"s,
                           "::1%"s,
                           "::1%0"s,
                           "::1%nosuch"s,
                           "::1%lo%lo"s,
                           "::1%-1"s,
                           "::1%4294967296"s,
                           "1.2.3.4%lo"s,
                           "1.2.3.4:53"s,
                           "1:2:3:4:5:6:7:8:9"s,
                           "127.0.0.1\0x"s,
                           "::1\0"s,
                           std::string(100'000, ':'),
                           "::1%" + std::string(100'000, 'x')}) {
    EXPECT_FALSE(SocketAddress::parse(text, 1)) << text.substr(0, 40);
  }
}

}  // namespace
}  // namespace platform
