// What the addresses of both families answer, asked through the class that holds either.

#include <gtest/gtest.h>

#include "netaddr/IPAddress.h"
#include "tests/netaddr/Thrown.h"

namespace quillet {
namespace {

using platform::Data;
using Texts = std::vector<std::string>;

TEST(IPAddressTest, ReadsAnIPv4AddressWithItsSubnet) {
  const IPAddress ip("192.168.1.1/24");
  EXPECT_EQ(ip.address(), "192.168.1.1/24");
  EXPECT_EQ(ip.parsedAddress(), (Texts{"192", "168", "1", "1"}));
  EXPECT_EQ(ip.subnet(), "/24");
  EXPECT_EQ(ip.subnetMask(), 24);
  EXPECT_EQ(ip.parsedSubnet(), "24");
  EXPECT_EQ(ip.groups(), 4);
  EXPECT_TRUE(ip.v4());
  EXPECT_EQ(ip.mask(), "110000001010100000000001");
  EXPECT_EQ(ip.maskWith(5), "11000");
  EXPECT_EQ(ip.bitsBase2WithStart(7, 12), "01010");
  EXPECT_EQ(ip.binaryZeroPad(), "11000000101010000000000100000001");
  EXPECT_EQ(std::get<IPv4>(ip.underlyingAddress()).addressMinusSufix(), "192.168.1.1");
}

TEST(IPAddressTest, ReadsAnIPv6AddressWithItsSuffixes) {
  const IPAddress ip("2001:DB8::1%eth0/64");
  EXPECT_EQ(ip.address(), "2001:DB8::1%eth0/64");
  EXPECT_EQ(ip.parsedAddress(), (Texts{"2001", "db8", "0", "0", "0", "0", "0", "1"}));
  EXPECT_EQ(ip.subnet(), "/64");
  EXPECT_EQ(ip.subnetMask(), 64);
  EXPECT_EQ(ip.parsedSubnet(), "64");
  EXPECT_EQ(ip.groups(), 8);
  EXPECT_FALSE(ip.v4());
  EXPECT_EQ(ip.mask(), "0010000000000001000011011011100" + std::string("0").append(32, '0'));
  const auto& ipv6 = std::get<IPv6>(ip.underlyingAddress());
  EXPECT_EQ(ipv6.addressMinusSuffix(), "2001:DB8::1");
  EXPECT_EQ(ipv6.zone(), "%eth0");
  EXPECT_EQ(ipv6.elidedGroups(), 5);
  EXPECT_EQ(ipv6.elisionBegin(), 2);
  EXPECT_EQ(ipv6.elisionEnd(), 7);
}

TEST(IPAddressTest, WithoutASubnetItIsAloneInOne) {
  EXPECT_EQ(IPAddress("1.2.3.4").subnet(), "/32");
  EXPECT_EQ(IPAddress("1.2.3.4").subnetMask(), 32);
  EXPECT_EQ(IPAddress("::1").subnet(), "/128");
  EXPECT_EQ(IPAddress("::1").subnetMask(), 128);
}

TEST(IPAddressTest, IsMadeOfBytes) {
  EXPECT_EQ(IPAddress::addressWithData(Data{192, 168, 0, 1}).address(), "192.168.0.1");
  const Data bytes = {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xAB, 1};
  const IPAddress ip = IPAddress::addressWithData(bytes);
  EXPECT_EQ(ip.correctForm(), "fe80::ab01");
  EXPECT_EQ(ip.data(), bytes);
  for (const std::size_t length : {0U, 3U, 5U, 15U, 17U, 32U}) {
    EXPECT_EQ(thrownBy([&] { (void)IPAddress::addressWithData(Data(length)); }),
              "ipInvalidLength: The provided data length does not correspond to neighter a IPv4 "
              "nor a IPv6 address");
  }
}

}  // namespace
}  // namespace quillet
