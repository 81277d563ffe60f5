#include <gtest/gtest.h>

#include "netaddr/IPAddress.h"
#include "tests/netaddr/Thrown.h"

namespace quillet {
namespace {

using platform::Data;

TEST(IPAddressTest, ForwardsEveryQuery) {
  for (const char* const text : {"10.1.2.3/9", "2001:db8::7/33", "nonsense"}) {
    const IPAddress ip(text);
    std::visit(
        [&](const auto& own) {
          EXPECT_EQ(ip.valid(), own.valid());
          EXPECT_EQ(ip.correct(), own.correct());
          EXPECT_EQ(ip.error(), own.error());
          EXPECT_EQ(ip.address(), own.address());
          EXPECT_EQ(ip.groups(), own.groups());
          EXPECT_EQ(ip.v4(), own.v4());
          EXPECT_EQ(ip.subnet(), own.subnet());
          EXPECT_EQ(ip.subnetMask(), own.subnetMask());
          EXPECT_EQ(ip.parsedSubnet(), own.parsedSubnet());
          EXPECT_EQ(ip.parsedAddress(), own.parsedAddress());
          EXPECT_EQ(ip.mask(), own.mask());
          EXPECT_EQ(ip.correctForm(), own.correctForm());
          EXPECT_EQ(ip.bigInteger(), own.bigInteger());
          EXPECT_EQ(ip.startAddress().address(), own.startAddress().address());
          EXPECT_EQ(ip.endAddress().address(), own.endAddress().address());
          EXPECT_EQ(ip.maskWith(5), own.maskWith(5));
          EXPECT_EQ(ip.bitsBase2WithStart(3, 9), own.bitsBase2WithStart(3, 9));
          EXPECT_EQ(ip.binaryZeroPad(), own.binaryZeroPad());
          EXPECT_EQ(ip.reversedForm(), own.reversedForm());
          EXPECT_EQ(ip.data(), own.data());
        },
        ip.underlyingAddress());
  }
  EXPECT_TRUE(IPAddress("10.1.2.3").isInSubnet(IPAddress("10.0.0.0/8")));
}

TEST(IPAddressTest, IsMadeOfBytes) {
  EXPECT_EQ(IPAddress::addressWithData(Data{192, 168, 0, 1}).address(), "192.168.0.1");
  const Data bytes = {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xAB, 1};
  const IPAddress ip = IPAddress::addressWithData(bytes);
  EXPECT_EQ(ip.correctForm(), "fe80::ab01");
  EXPECT_EQ(ip.data(), bytes);
  for (std::size_t length = 0; length < 40; ++length) {
    const bool fits = length == 4 || length == 16;
    EXPECT_EQ(thrownBy([&] { (void)IPAddress::addressWithData(Data(length)); }),
              fits ? ""
                   : "ipInvalidLength: The provided data length does not correspond to neighter a "
                     "IPv4 nor a IPv6 address");
  }
}

}  // namespace
}  // namespace quillet
