// What the addresses of both families answer, asked through the class that holds either.

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <array>
#include <random>

#include "netaddr/DNSAResourceRecord.h"
#include "netaddr/IPAddress.h"
#include "tests/netaddr/Samples.h"
#include "tests/support/Wire.h"

namespace quillet {
namespace {

using platform::Data;
using Texts = std::vector<std::string>;

TEST(IPAddressTest, ReadsAnAddressWithItsSubnet) {
  const std::tuple<const char*, Texts, int, const char*, const char*> rows[] = {
      {"192.168.1.1/24", {"192", "168", "1", "1"}, 24, "24", "110000001010100000000001"},
      {"1.0.0.0", {"1", "0", "0", "0"}, 32, "", "00000001000000000000000000000000"},
      {"20::1/9", {"20", "0", "0", "0", "0", "0", "0", "1"}, 9, "9", "000000000"},
      {"::/000", Texts(8, "0"), 0, "000", ""},
  };
  for (const auto& [text, parsed, subnetMask, parsedSubnet, bits] : rows) {
    const IPAddress ip(text);
    EXPECT_EQ(ip.address(), text);
    EXPECT_EQ(ip.parsedAddress(), parsed);
    EXPECT_EQ(ip.groups(), static_cast<int>(parsed.size()));
    EXPECT_EQ(ip.v4(), parsed.size() == 4);
    EXPECT_EQ(ip.subnet(), "/" + std::to_string(subnetMask));
    EXPECT_EQ(ip.subnetMask(), subnetMask);
    EXPECT_EQ(ip.parsedSubnet(), parsedSubnet);
    EXPECT_EQ(ip.mask(), bits);
  }
  const IPAddress ip("192.168.1.1/24");
  EXPECT_EQ(ip.binaryZeroPad(), "11000000101010000000000100000001");
  EXPECT_EQ(ip.bitsBase2WithStart(-3, 4) + ip.bitsBase2WithStart(7, 12), "110001010");
  EXPECT_EQ(ip.bitsBase2WithStart(5, 3) + ip.bitsBase2WithStart(40, 50), "");
}

TEST(IPAddressTest, AgreesWithInetNtop) {
  std::mt19937 random{6};
  for (int i = 0; i < 10000; ++i) {
    const bool v4 = i % 2 == 0;
    Data bytes(v4 ? 4 : 16);
    for (std::size_t group = 0; group < bytes.size(); group += 2) {
      const auto value = random() % 3 == 0 ? random() >> (random() % 32) : 0;
      bytes[group] = static_cast<std::uint8_t>(value >> 8);
      bytes[group + 1] = static_cast<std::uint8_t>(value);
    }
    std::array<char, INET6_ADDRSTRLEN> written;
    inet_ntop(v4 ? AF_INET : AF_INET6, bytes.data(), written.data(), written.size());
    const std::string text = written.data();
    const IPAddress ip(text);
    const bool dotted = !v4 && text.find('.') != std::string::npos;
    ASSERT_EQ(ip.data(), bytes) << text;
    ASSERT_EQ(IPAddress::addressWithData(bytes).data(), bytes);
    ASSERT_EQ(dotted ? std::get<IPv6>(ip.underlyingAddress()).v4inv6() : ip.correctForm(), text);
    ASSERT_EQ(ip.correct(), !dotted);
  }
}

// What Python's ipaddress module says of value, first and last address, and reverse name.
TEST(IPAddressTest, HasItsSubnetAndItsReverseName) {
  const std::array<const char*, 5> rows[] = {
      {"0.0.0.0/0", "0", "0.0.0.0", "255.255.255.255", "0.0.0.0.in-addr.arpa."},
      {"203.0.113.77/27", "CB00714D", "203.0.113.64", "203.0.113.95", "77.113.0.203.in-addr.arpa."},
      {"8.8.8.8", "8080808", "8.8.8.8", "8.8.8.8", "8.8.8.8.in-addr.arpa."},
      {"FE80::A:bCd/10", "FE8000000000000000000000000A0BCD",
       "fe80::", "febf:ffff:ffff:ffff:ffff:ffff:ffff:ffff", "e.f.ip6.arpa."},
      {"1:2:3:4:5:6:7:8/63", "10002000300040005000600070008",
       "1:2:3:4::", "1:2:3:5:ffff:ffff:ffff:ffff", "0.0.0.3.0.0.0.2.0.0.0.1.0.0.0.ip6.arpa."},
  };
  for (const auto& [text, value, first, last, reversed] : rows) {
    const IPAddress ip(text);
    EXPECT_EQ(ip.bigInteger().toStringWithRadix(16), value);
    EXPECT_EQ(ip.startAddress().correctForm(), first);
    EXPECT_EQ(ip.endAddress().correctForm(), last);
    EXPECT_EQ(ip.reversedForm(), reversed);
  }
}

TEST(IPAddressTest, IsInASubnetThatHoldsAllOfIt) {
  const std::tuple<const char*, const char*, bool> rows[] = {
      {"10.0.0.5/8", "10.0.0.0/8", true},
      {"10.0.0.5/8", "10.1.0.0/16", false},
      {"10.1.255.255", "10.1.0.0/16", true},
      {"10.2.0.0", "10.1.0.0/16", false},
      {"10.1.0.1", "10.1.0.0", false},
      {"255.1.1.1/1", "1.1.1.1/0", true},
      {"128.0.0.0/1", "0.0.0.0/1", false},
      {"2001:db8::1", "2001:db8::/33", true},
      {"fe80::/10", "fe80::/11", false},
      {"2001:db8:8000::", "2001:db8::/33", false},
      {"1.2.3.4", "::/0", false},
      {"::1", "0.0.0.0/0", false},
  };
  for (const auto& [address, subnet, expected] : rows) {
    EXPECT_EQ(IPAddress(address).isInSubnet(IPAddress(subnet)), expected) << address << subnet;
  }
}

TEST(IPAddressTest, IsNotMadeOfAnotherNumberOfBytes) {
  for (const std::size_t length : {0U, 3U, 5U, 15U, 17U}) {
    EXPECT_EQ(thrownBy([&] { (void)IPAddress::addressWithData(Data(length)); }),
              "ipInvalidLength: The provided data length does not correspond to neighter a IPv4 "
              "nor a IPv6 address");
  }
}

TEST(DNSAResourceRecordTest, HoldsItsDataAsAnAddress) {
  DNSResourceRecord record;
  record.name = "a";
  record.type = record.resourceClass = 1;
  record.ttl = 300;
  record.data = test::hex("5db8d822");
  const auto typed = DNSAResourceRecord::fromResource(record);
  EXPECT_EQ(typed->ip->correctForm(), "93.184.216.34");
  EXPECT_EQ(typed->encode(), test::hex("01 61 00 0001 0001 0000012c 0004 5db8d822"));
  record.data.resize(16);
  EXPECT_EQ(DNSAResourceRecord::fromResource(record)->ip->correctForm(), "5db8:d822::");
  EXPECT_EQ(DNSAResourceRecord::fromResource(record)->encodeData(), record.data);
  record.data.resize(3);
  EXPECT_TRUE(
      thrownBy([&] { DNSAResourceRecord::fromResource(record); }).starts_with("ipInvalidLength: "));
}

}  // namespace
}  // namespace quillet
