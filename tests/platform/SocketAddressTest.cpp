#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <net/if.h>

#include <string>

#include "platform/network/SocketAddress.h"

namespace platform {
namespace {

TEST(SocketAddressTest, ReadsAddressesAndWritesThemAgain) {
  const struct {
    const char* text;
    const char* written;
    int family;
  } rows[] = {
      {"127.0.0.1", "127.0.0.1", AF_INET},
      {"255.255.255.255", "255.255.255.255", AF_INET},
      {"::1", "::1", AF_INET6},
      {"2001:DB8:0:0::1", "2001:db8::1", AF_INET6},
      {"1:2:3:4:5:6:7:8", "1:2:3:4:5:6:7:8", AF_INET6},
      {"fe80::1%lo", "fe80::1%lo", AF_INET6},
      {"fe80::1%1", "fe80::1%lo", AF_INET6},
      {"fe80::1%4294967295", "fe80::1%4294967295", AF_INET6},
      {"::ffff:127.0.0.1", "127.0.0.1", AF_INET},
      {"::ffff:7f00:1", "127.0.0.1", AF_INET},
  };
  for (const auto& row : rows) {
    const auto address = SocketAddress::parse(row.text, 5300);
    ASSERT_TRUE(address) << row.text;
    EXPECT_EQ(address->host(), row.written);
    EXPECT_EQ(address->family(), row.family) << row.text;
    EXPECT_EQ(address->port(), 5300) << row.text;
  }
}

TEST(SocketAddressTest, RefusesWhatIsNoAddress) {
  const std::string rows[] = {"",
                              " ",
                              "127.1",
                              "127.0.0.1 ",
                              " 127.0.0.1",
                              "1.2.3.4.5",
                              "256.0.0.1",
                              "0x7f.0.0.1",
                              "2130706433",
                              "01.2.3.4",
                              "localhost",
                              "example.com",
                              "[::1]",
                              ":::",
                              "::1%",
                              "::1%0",
                              "::1%nosuch",
                              "::1%lo%lo",
                              "::1%-1",
                              "::1%4294967296",
                              "%lo",
                              "1.2.3.4%lo",
                              "1.2.3.4:53",
                              "::1 ",
                              "::g",
                              "1:2:3:4:5:6:7:8:9",
                              std::string("127.0.0.1\0x", 11),
                              std::string("::1\0", 4),
                              std::string(100'000, ':'),
                              std::string(100'000, '1'),
                              "::1%" + std::string(100'000, 'x')};
  for (const auto& row : rows) {
    EXPECT_FALSE(SocketAddress::parse(row, 1)) << row.substr(0, 40);
  }
}

}  // namespace
}  // namespace platform
