#include <gtest/gtest.h>

#include "dns_tools/IPv6.h"
#include "platform/foundation/Description.h"
#include "tests/support/Wire.h"

namespace {

using DnsToolsSocket::IPv6;
using platform::Data;
using quillet::test::hex;

TEST(IPv6, BytesAndTextStandForEachOther) {
  const struct {
    const char* bytes;
    const char* text;
  } kCases[] = {
      {"00000000000000000000000000000000", "::"},
      {"00000000000000000000000000000001", "::1"},
      {"20010db8000000000000000000000001", "2001:db8::1"},
      {"20010db8000000010000000000000001", "2001:db8:0:1::1"},
      {"00000000000000000000ffffc0000201", "::ffff:192.0.2.1"},
      {"ffffffffffffffffffffffffffffffff", "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
  };
  for (const auto& [bytes, text] : kCases) {
    const auto ip = IPv6::networkBytes(hex(bytes));
    ASSERT_TRUE(ip) << text;
    EXPECT_EQ(ip->presentationString(), text);
    EXPECT_EQ(ip->presentation(), text);
    EXPECT_EQ(ip->debugDescription(), text);
    EXPECT_EQ(platform::description(*ip), text);
    const auto parsed = IPv6::fromPresentation(text);
    ASSERT_TRUE(parsed) << text;
    EXPECT_EQ(Data(parsed->bytes().begin(), parsed->bytes().end()), hex(bytes));
    EXPECT_EQ(*parsed, *ip);
  }
}

TEST(IPv6, RefusesOtherTexts) {
  for (const auto* text :
       {"", "1.2.3.4", ":::", "2001:db8::1::2", "1:2:3:4:5:6:7:8:9", "::g", "fe80::1%eth0"}) {
    EXPECT_FALSE(IPv6::fromPresentation(text)) << text;
  }
  EXPECT_FALSE(IPv6::fromPresentation(std::string_view("::1\0", 4)));
}

}  // namespace
