#include "platform/udp/SocketAddress.h"
#include "tests/platform/Test.h"

namespace platform::test {

TEST(SocketAddressTest, ReadsAddressesAndWritesThemAgain) {
  const auto written = [](const std::string& text) {
    const auto parsed = SocketAddress::parse(text, 5300);
    return parsed ? (parsed->isIPv6() ? "6 " : "4 ") + description(*parsed) : "none";
  };
  const std::string longText(100'000, ':');
  expectEach(written, {{"255.255.255.255", "4 255.255.255.255:5300"},
                       {"2001:DB8:0:0::1", "6 [2001:db8::1]:5300"},
                       {"fe80::1%lo", "6 [fe80::1%lo]:5300"},
                       {"fe80::1%1", "6 [fe80::1%lo]:5300"},
                       {"fe80::1%4294967295", "6 [fe80::1%4294967295]:5300"},
                       {"::ffff:7f00:1", "4 127.0.0.1:5300"}});
  for (const auto& text :
       {"127.1"s, "::1%"s, "::1%0"s, "::1%nosuch"s, "::1%lo%lo"s, "::1%-1"s, "::1%4294967296"s,
        "127.0.0.1\0x"s, "::1\0"s, longText, "::1%" + longText}) {
    EXPECT_EQ(written(text), "none") << text.substr(0, 20);
  }
}

}  // namespace platform::test
