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

template <class Address>
void expectSame(const char* bytes, const char* text) {
  const auto ip = Address::networkBytes(quillet::test::hex(bytes));
  ASSERT_TRUE(ip) << text;
  EXPECT_EQ(ip->presentationString(), text);
  EXPECT_EQ(ip->presentation(), platform::description(*ip));
  const auto parsed = Address::fromPresentation(text);
  ASSERT_TRUE(parsed && *parsed == *ip) << text;
  EXPECT_EQ(Data(parsed->bytes().begin(), parsed->bytes().end()), quillet::test::hex(bytes));
}

TEST(IP, BytesAndTextStandForEachOther) {
  expectSame<IPv4>("01020304", "1.2.3.4");
  expectSame<IPv4>("ffffff00", "255.255.255.0");
  expectSame<IPv6>("20010db8000000010000000000000001", "2001:db8:0:1::1");
  EXPECT_EQ(IPv4(0x01020304).debugDescription(), "1.2.3.4");
}

TEST(IP, RefusesZeroOctetsInTextsAndOtherLengths) {
  EXPECT_FALSE(IPv4::fromPresentation(std::string_view("1.2.3.4\0", 8)));
  EXPECT_FALSE(IPv6::fromPresentation(std::string_view("::1\0", 4)));
  EXPECT_FALSE(IPv6::fromPresentation("1.2.3.4"));
  for (const std::size_t size : {0U, 3U, 5U, 15U, 17U}) {
    EXPECT_FALSE(IPv4::networkBytes(Data(size)) || IPv6::networkBytes(Data(size))) << size;
  }
}

TEST(IP, OfARecordChangesToATextThatIsOne) {
  const quillet::test::LogCapture log;
  HostRecord<IPv4> record("a.", false, 1, 60, IPv4(0x01020304));
  for (const auto* text : {"5.6.7.8", "::1"}) {
    record.changeIP(text);
    EXPECT_EQ(record.ip.presentation(), "5.6.7.8");
  }
  EXPECT_EQ(log.records(), std::vector<std::string>{"*** wrong ip ***"});
}

}  // namespace
