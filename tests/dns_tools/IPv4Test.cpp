#include <gtest/gtest.h>

#include "dns_tools/IPv4.h"
#include "platform/foundation/Description.h"
#include "tests/support/Wire.h"

namespace {

using DnsToolsSocket::IPv4;
using platform::Data;
using quillet::test::hex;

TEST(IPv4, BytesAndTextStandForEachOther) {
  const struct {
    const char* bytes;
    const char* text;
  } kCases[] = {
      {"00000000", "0.0.0.0"},     {"01020304", "1.2.3.4"},         {"7f000001", "127.0.0.1"},
      {"c0000264", "192.0.2.100"}, {"ffffffff", "255.255.255.255"},
  };
  for (const auto& [bytes, text] : kCases) {
    const auto ip = IPv4::networkBytes(hex(bytes));
    ASSERT_TRUE(ip) << text;
    EXPECT_EQ(ip->presentationString(), text);
    EXPECT_EQ(ip->presentation(), text);
    EXPECT_EQ(ip->debugDescription(), text);
    EXPECT_EQ(platform::description(*ip), text);
    const auto parsed = IPv4::fromPresentation(text);
    ASSERT_TRUE(parsed) << text;
    EXPECT_EQ(Data(parsed->bytes().begin(), parsed->bytes().end()), hex(bytes));
    EXPECT_EQ(*parsed, *ip);
  }
}

TEST(IPv4, RefusesOtherTexts) {
  for (const auto* text :
       {"", "1.2.3", "1.2.3.4.5", "1.2.3.256", "01.2.3.4", " 1.2.3.4", "1.2.3.4 ", "::1", "a"}) {
    EXPECT_FALSE(IPv4::fromPresentation(text)) << text;
  }
  EXPECT_FALSE(IPv4::fromPresentation(std::string_view("1.2.3.4\0", 8)));
}

}  // namespace
