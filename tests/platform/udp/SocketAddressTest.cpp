#include "platform/udp/SocketAddress.h"
#include "tests/platform/Test.h"

namespace platform::test {

TEST(SocketAddressTest, ReadsAddressesAndWritesThemAgain) {
  const auto written = [](const std::string& text) {
    const auto parsed = SocketAddress::parse(text, 5300);
    return parsed ? (parsed->isIPv6() ? "6 " : "4 ") + description(*parsed) : "none";
  };
  const std::string longText(100'000, ':');
  expectEach(written, {
                          {"255.255.255.255", "4 255.255.255.255:5300"},
                          {"2001:DB8:0:0::1", "6 [2001:db8::1]:5300"},
                          {"fe80::1%lo", "6 [fe80::1%lo]:5300"},
                          {"fe80::1%1", "6 [fe80::1%lo]:5300"},
                          {"fe80::1%4294967295", "6 [fe80::1%4294967295]:5300"},
                          {"::ffff:7f00:1", "4 127.0.0.1:5300"},
                          {"127.1", "none"},
                          {"::1%", "none"},
                          {"::1%0", "none"},
                          {"::1%nosuch", "none"},
                          {"::1%lo%lo", "none"},
                          {"::1%-1", "none"},
                          {"::1%4294967296", "none"},
                          {"127.0.0.1\0x"s, "none"},
                          {"::1\0"s, "none"},
                          {longText, "none"},
                          {"::1%" + longText, "none"},
                      });
}

}  // namespace platform::test
