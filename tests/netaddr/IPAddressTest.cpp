// What the addresses of both families answer, asked through the class that holds either.

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <random>
#include <sstream>

#include "netaddr/IPAddress.h"
#include "tests/netaddr/Thrown.h"

namespace quillet {
namespace {

using platform::Data;
using Texts = std::vector<std::string>;

TEST(IPAddressTest, ReadsAnAddressWithItsSubnet) {
  const struct {
    const char* text;
    Texts parsed;
    const char* subnet;
    int subnetMask;
    const char* parsedSubnet;
    const char* bits;
  } rows[] = {
      {"192.168.1.1/24", {"192", "168", "1", "1"}, "/24", 24, "24", "110000001010100000000001"},
      {"128.1.2.255", {"128", "1", "2", "255"}, "/32", 32, "", "10000000000000010000001011111111"},
      {"2001:DB8::1/20",
       {"2001", "db8", "0", "0", "0", "0", "0", "1"},
       "/20",
       20,
       "20",
       "00100000000000010000"},
      {"::/000", Texts(8, "0"), "/0", 0, "000", ""},
  };
  for (const auto& [text, parsed, subnet, subnetMask, parsedSubnet, bits] : rows) {
    const IPAddress ip(text);
    EXPECT_EQ(ip.address(), text);
    EXPECT_EQ(ip.parsedAddress(), parsed);
    EXPECT_EQ(ip.groups(), static_cast<int>(parsed.size()));
    EXPECT_EQ(ip.v4(), parsed.size() == 4);
    EXPECT_EQ(ip.subnet(), subnet);
    EXPECT_EQ(ip.subnetMask(), subnetMask);
    EXPECT_EQ(ip.parsedSubnet(), parsedSubnet);
    EXPECT_EQ(ip.mask(), bits);
    EXPECT_TRUE(ip.binaryZeroPad().starts_with(bits));
    EXPECT_EQ(ip.maskWith(9), ip.binaryZeroPad().substr(0, 9));
    EXPECT_EQ(ip.bitsBase2WithStart(7, 12), ip.binaryZeroPad().substr(7, 5));
  }
}

TEST(IPAddressTest, AgreesWithInetPtonAndNtop) {
  std::mt19937 random{6};
  constexpr std::string_view alphabet = "0123456789abcdefABCDEF::::.....g";
  int accepted = 0;
  for (int i = 0; i < 40000; ++i) {
    const bool v4 = i % 2 == 0;
    Data bytes(v4 ? 4 : 16);
    for (std::size_t group = 0; group < bytes.size(); group += 2) {
      const auto value = random() % 3 == 0 ? random() >> (random() % 32) : 0;
      bytes[group] = static_cast<std::uint8_t>(value >> 8);
      bytes[group + 1] = static_cast<std::uint8_t>(value);
    }
    std::array<char, INET6_ADDRSTRLEN> written;
    inet_ntop(v4 ? AF_INET : AF_INET6, bytes.data(), written.data(), written.size());
    std::string text = written.data();
    const IPAddress ip(text);
    const bool dotted = !v4 && text.find('.') != std::string::npos;
    ASSERT_EQ(ip.data(), bytes) << text;
    ASSERT_EQ(dotted ? std::get<IPv6>(ip.underlyingAddress()).v4inv6() : ip.correctForm(), text);

    // One character changed. Of IPv4 the platform reads no leading zeros.
    text[random() % text.size()] = alphabet[random() % alphabet.size()];
    const IPAddress changed(text);
    const bool expected = inet_pton(AF_INET, text.c_str(), bytes.data()) == 1 ||
                          inet_pton(AF_INET6, text.c_str(), bytes.data()) == 1;
    const bool isIPv6 = std::holds_alternative<IPv6>(changed.underlyingAddress());
    ASSERT_EQ(changed.valid() && (isIPv6 || changed.correct()), expected) << text;
    if (expected) {
      ASSERT_EQ(changed.data(), bytes) << text;
      ++accepted;
    }
  }
  EXPECT_GT(accepted, 2000);
}

void expectForms(std::istringstream& line) {
  std::string text;
  std::string correct;
  std::string canonical;
  std::string value;
  std::string first;
  std::string last;
  std::string reversed;
  line >> text >> correct >> canonical >> value >> first >> last >> reversed;
  const IPAddress ip(text);
  ASSERT_TRUE(ip.valid()) << text;
  EXPECT_EQ(ip.correctForm(), correct) << text;
  EXPECT_EQ(ip.bigInteger().toStringWithRadix(16), value) << text;
  EXPECT_EQ(ip.startAddress().correctForm(), first) << text;
  EXPECT_EQ(ip.endAddress().correctForm(), last) << text;
  EXPECT_EQ(ip.reversedForm(), reversed) << text;
  EXPECT_EQ(ip.correct(), text.starts_with(correct + "/")) << text;
  if (const auto* ipv6 = std::get_if<IPv6>(&ip.underlyingAddress())) {
    EXPECT_EQ(ipv6->canonicalForm(), canonical);
    EXPECT_EQ(ipv6->canonical(), ipv6->addressMinusSuffix() == canonical);
  }
}

// address_vectors.txt is written by make_address_vectors.py beside it.
TEST(IPAddressTest, AgreesWithPython) {
  std::ifstream file(NETADDR_VECTORS "/address_vectors.txt");
  int forms = 0;
  int memberships = 0;
  for (std::string text; std::getline(file, text);) {
    std::istringstream line(text);
    std::string kind;
    line >> kind;
    if (kind != "in") {
      expectForms(line);
      ++forms;
      continue;
    }
    std::string address;
    std::string subnet;
    bool expected = false;
    line >> address >> subnet >> expected;
    EXPECT_EQ(IPAddress(address).isInSubnet(IPAddress(subnet)), expected) << text;
    ++memberships;
  }
  EXPECT_GT(forms, 100);
  EXPECT_GT(memberships, 50);
}

TEST(IPAddressTest, IsInNoSubnetOfTheOtherFamily) {
  EXPECT_FALSE(IPAddress("1.2.3.4").isInSubnet(IPAddress("::/0")));
  EXPECT_FALSE(IPAddress("::1").isInSubnet(IPAddress("0.0.0.0/0")));
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
