// What the addresses of both families answer, asked through the class that holds either.

#include "netaddr/DNSAResourceRecord.h"
#include "netaddr/IPAddress.h"
#include "netaddr/PaddedText.h"
#include "tests/netaddr/Samples.h"
#include "tests/support/Test.h"

namespace quillet::test {

TEST(IPv4Test, ReadsTexts) {
  const std::pair<std::optional<std::string>, std::vector<std::string>> rows[] = {
      {std::nullopt, {"192.168.001.1", "09.00.000.255", "1.2.3.4/00", "1.2.3.4/32"}},
      {"Invalid subnet mask", {"1.2.3.4/33", "nonsense/99"}},
      {"Invalid IPv4 Address",
       {"1.2.3.4/123", "1.2.3.4/", "1.2.3.4/8/8", "1.2.3.4/a", "256.1.1.1", "1.1.1.0001", "1.1.1",
        "1.1.1.1.1", "1.1.1.1\n", std::string("1.1.1.1\0", 8), "", std::string(1000000, '.')}}};
  for (const auto& [error, texts] : rows) {
    for (const std::string& text : texts) {
      const IPv4 ip(text);
      EXPECT_EQ(ip.error(), error) << text.substr(0, 40);
      EXPECT_EQ(IPv4("0.0.0.0").isInSubnet(ip), text == "1.2.3.4/00");
      EXPECT_TRUE(!error || (ip.bigInteger() == BigInt() && !ip.isInSubnet(IPv4("0.0.0.0/0"))));
    }
  }
}

TEST(IPv4Test, HasItsForms) {
  for (const char* const text : {"192.168.001.1", "192.168.1.1/08", "1.1.1.1/33", "256.01.1.1"}) {
    EXPECT_FALSE(IPv4(text).correct()) << text;
  }
  EXPECT_TRUE(IPv4("192.168.1.1/0").correct() && IPv4("1.2.3.4/32").correct());
  EXPECT_EQ(IPv4("10.0.0.255").v6Group(), "a00:ff");
  EXPECT_EQ(IPv4("255.171.0.9").hex(), "ff:ab:00:09");
  EXPECT_EQ(IPv4("010.001.000.09").reversedForm(), "9.0.1.10.in-addr.arpa.");
  EXPECT_EQ(IPv4::ipv4FromHex("0a:1:2:3").correctForm(), "0.0.161.35");
  EXPECT_EQ(IPv4::ipv4FromHex("1.020304").error(), "Invalid IPv4 Address");
  EXPECT_EQ(IPv4("1.2.3.4/99").correctForm(), std::nullopt);
  EXPECT_EQ(IPv4("1.2.3.4/99").reversedForm(), "");
  IPv4 again("256.1.1.1.1");
  EXPECT_EQ(again.correctForm(), "256.1.1.1.1");
  again.parse("1.2.3.4");
  EXPECT_TRUE(again.valid() && !again.error() && again.correctForm() == "1.2.3.4");
  EXPECT_EQ(stringByPaddingLeftToLength("7", 4, "ab"), "aba7");
  EXPECT_EQ(stringByPaddingLeftToLength("7", 4, ""), "7");
}

/// All that an address says of itself, between blanks.
std::string saidBy(const std::string& address) {
  const IPAddress ip(address);
  std::string text(ip.v4() ? "v4 " : "v6 ");
  for (const auto& group : ip.parsedAddress()) {
    text.append(group).append(",");
  }
  EXPECT_EQ(ip.address(), address);
  EXPECT_EQ(ip.groups(), static_cast<int>(ip.parsedAddress().size()));
  EXPECT_EQ(ip.subnet(), "/" + std::to_string(ip.subnetMask()));
  return text + " " + ip.parsedSubnet() + ip.subnet() + " " + ip.mask() + " " +
         ip.bigInteger().toStringWithRadix(16) + " " + ip.startAddress().correctForm().value() +
         " " + ip.endAddress().correctForm().value() + " " + ip.reversedForm();
}

// Value, first and last address and reverse name are as Python's ipaddress module gives them.
TEST(IPAddressTest, HasItsSubnetAndItsReverseName) {
  expectEach(
      saidBy,
      {
          {"192.168.1.1/24",
           "v4 192,168,1,1, 24/24 110000001010100000000001 C0A80101 192.168.1.0 192.168.1.255 "
           "1.1.168.192.in-addr.arpa."},
          {"1.0.0.0",
           "v4 1,0,0,0, /32 00000001000000000000000000000000 1000000 1.0.0.0 1.0.0.0 "
           "0.0.0.1.in-addr.arpa."},
          {"0.0.0.0/0", "v4 0,0,0,0, 0/0  0 0.0.0.0 255.255.255.255 0.0.0.0.in-addr.arpa."},
          {"FE80::A:bCd/10",
           "v6 fe80,0,0,0,0,0,a,bcd, 10/10 1111111010 FE8000000000000000000000000A0BCD fe80:: "
           "febf:ffff:ffff:ffff:ffff:ffff:ffff:ffff e.f.ip6.arpa."},
          {"1:2:3::6:7:8/047",
           "v6 1,2,3,0,0,6,7,8, 047/47 00000000000000010000000000000010000000000000001 "
           "10002000300000000000600070008 1:2:2:: 1:2:3:ffff:ffff:ffff:ffff:ffff "
           "0.0.0.2.0.0.0.1.0.0.0.ip6.arpa."},
      });
  const IPAddress ip("192.168.1.1/24");
  EXPECT_EQ(ip.bitsBase2WithStart(-3, 4) + ip.bitsBase2WithStart(7, 12), "110001010");
  EXPECT_EQ(ip.bitsBase2WithStart(5, 3) + ip.bitsBase2WithStart(40, 50), "");
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
      {"::1", "0.0.0.0/0", false}};
  for (const auto& [address, subnet, expected] : rows) {
    EXPECT_EQ(IPAddress(address).isInSubnet(IPAddress(subnet)), expected) << address << subnet;
  }
}

TEST(DNSAResourceRecordTest, HoldsItsDataAsAnAddress) {
  DNSResourceRecord record;
  record.name = "a";
  record.type = record.resourceClass = 1;
  record.ttl = 300;
  record.data = hex("5db8d822");
  const auto typed = DNSAResourceRecord::fromResource(record);
  EXPECT_EQ(typed->ip->correctForm(), "93.184.216.34");
  EXPECT_EQ(typed->encode(), hex("01 61 00 0001 0001 0000012c 0004 5db8d822"));
  record.data.resize(16);
  EXPECT_EQ(DNSAResourceRecord::fromResource(record)->ip->correctForm(), "5db8:d822::");
  EXPECT_EQ(DNSAResourceRecord::fromResource(record)->encodeData(), record.data);
  for (const std::size_t length : {0U, 3U, 5U, 15U, 17U}) {
    record.data.resize(length);
    EXPECT_EQ(thrownBy([&] { DNSAResourceRecord::fromResource(record); }),
              "ipInvalidLength: The provided data length does not correspond to neighter a IPv4 "
              "nor a IPv6 address");
  }
}

}  // namespace quillet::test
