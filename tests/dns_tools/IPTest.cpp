// Addresses of both families.

#include <gtest/gtest.h>

#include "dns_tools/HostRecord.h"
#include "platform/base/Description.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Wire.h"

namespace {

using DnsToolsSocket::HostRecord;
using DnsToolsSocket::IPv4;
using DnsToolsSocket::IPv6;
using platform::Data;
using quillet::test::hex;

template <class Address>
void expectSame(const char* bytes, const char* text) {
  const auto ip = Address::networkBytes(hex(bytes));
  ASSERT_TRUE(ip) << text;
  EXPECT_EQ(ip->presentationString(), text);
  EXPECT_EQ(ip->presentation(), text);
  EXPECT_EQ(platform::description(*ip), text);
  const auto parsed = Address::fromPresentation(text);
  ASSERT_TRUE(parsed) << text;
  EXPECT_EQ(Data(parsed->bytes().begin(), parsed->bytes().end()), hex(bytes));
  EXPECT_EQ(*parsed, *ip);
}

TEST(IP, BytesAndTextStandForEachOther) {
  expectSame<IPv4>("00000000", "0.0.0.0");
  expectSame<IPv4>("01020304", "1.2.3.4");
  expectSame<IPv4>("ffffffff", "255.255.255.255");
  expectSame<IPv6>("00000000000000000000000000000000", "::");
  expectSame<IPv6>("20010db8000000010000000000000001", "2001:db8:0:1::1");
  expectSame<IPv6>("00000000000000000000ffffc0000201", "::ffff:192.0.2.1");
  EXPECT_EQ(IPv4(0x01020304).debugDescription(), "1.2.3.4");
}

TEST(IP, RefusesOtherTextsAndLengths) {
  for (const auto* text : {"", "1.2.3", "1.2.3.256", "01.2.3.4", " 1.2.3.4", "1.2.3.4 ", "::1"}) {
    EXPECT_FALSE(IPv4::fromPresentation(text)) << text;
  }
  for (const auto* text : {"", "1.2.3.4", ":::", "1:2:3:4:5:6:7:8:9", "::g", "fe80::1%eth0"}) {
    EXPECT_FALSE(IPv6::fromPresentation(text)) << text;
  }
  EXPECT_FALSE(IPv4::fromPresentation(std::string_view("1.2.3.4\0", 8)));
  EXPECT_FALSE(IPv6::fromPresentation(std::string_view("::1\0", 4)));
  for (const std::size_t size : {0U, 3U, 5U, 15U, 17U}) {
    EXPECT_FALSE(IPv4::networkBytes(Data(size))) << size;
    EXPECT_FALSE(IPv6::networkBytes(Data(size))) << size;
  }
}

TEST(IP, OfARecordChangesToATextThatIsOne) {
  const quillet::test::LogCapture log;
  HostRecord<IPv4> record("a.", false, 1, 60, IPv4(0x01020304));
  record.changeIP("5.6.7.8");
  EXPECT_EQ(record.ip.presentation(), "5.6.7.8");
  record.changeIP("::1");
  EXPECT_EQ(record.ip.presentation(), "5.6.7.8");
  EXPECT_EQ(log.records(), std::vector<std::string>{"*** wrong ip ***"});
}

}  // namespace
