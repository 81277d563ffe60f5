#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/network/SocketAddress.h"

namespace platform {
namespace {

TEST(SocketAddressTest, ReadsAddressesAndWritesThemAgainAndRefusesTheRest) {
  const struct {
    std::string text;
    std::optional<std::string> written;
  } rows[] = {
      {"255.255.255.255", "255.255.255.255"},
      {"2001:DB8:0:0::1", "2001:db8::1"},
      {"1:2:3:4:5:6:7:8", "1:2:3:4:5:6:7:8"},
      {"fe80::1%lo", "fe80::1%lo"},
      {"fe80::1%1", "fe80::1%lo"},
      {"fe80::1%4294967295", "fe80::1%4294967295"},
      {"::ffff:7f00:1", "127.0.0.1"},
      {"", {}},
      {"127.1", {}},
      {"127.0.0.1 ", {}},
      {"256.0.0.1", {}},
      {"2130706433", {}},
      {"01.2.3.4", {}},
      {"localhost", {}},
      {"[::1]", {}},
      {":::", {}},
      {"::1%", {}},
      {"::1%0", {}},
      {"::1%nosuch", {}},
      {"::1%lo%lo", {}},
      {"::1%-1", {}},
      {"::1%4294967296", {}},
      {"1.2.3.4%lo", {}},
      {"1.2.3.4:53", {}},
      {"1:2:3:4:5:6:7:8:9", {}},
      {std::string("127.0.0.1\0x", 11), {}},
      {std::string("::1\0", 4), {}},
      {std::string(100'000, ':'), {}},
      {"::1%" + std::string(100'000, 'x'), {}},
  };
  for (const auto& [text, written] : rows) {
    const auto address = SocketAddress::parse(text, 5300);
    ASSERT_EQ(address.has_value(), written.has_value()) << text.substr(0, 40);
    if (address) {
      EXPECT_EQ(address->host(), written);
      EXPECT_EQ(address->isIPv6(), written->find(':') != std::string::npos) << text;
      EXPECT_EQ(address->port(), 5300) << text;
    }
  }
}

}  // namespace
}  // namespace platform
