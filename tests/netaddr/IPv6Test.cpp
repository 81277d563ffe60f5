#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

#include "netaddr/IPv6.h"

namespace quillet {
namespace {

using platform::Data;
using Texts = std::vector<std::string>;

TEST(IPv6Test, ReadsAnAddressWithItsSuffixes) {
  const IPv6 ip("2001:DB8::1%eth0/64");
  EXPECT_TRUE(ip.valid());
  EXPECT_FALSE(ip.error());
  EXPECT_EQ(ip.address(), "2001:DB8::1%eth0/64");
  EXPECT_EQ(ip.addressMinusSuffix(), "2001:DB8::1");
  EXPECT_EQ(ip.zone(), "%eth0");
  EXPECT_EQ(ip.subnet(), "/64");
  EXPECT_EQ(ip.subnetMask(), 64);
  EXPECT_EQ(ip.parsedSubnet(), "64");
  EXPECT_EQ(ip.parsedAddress(), (Texts{"2001", "db8", "0", "0", "0", "0", "0", "1"}));
  EXPECT_EQ(ip.groups(), 8);
  EXPECT_FALSE(ip.v4());
  EXPECT_EQ(ip.elidedGroups(), 5);
  EXPECT_EQ(ip.elisionBegin(), 2);
  EXPECT_EQ(ip.elisionEnd(), 7);

  const IPv6 plain("1:2:3:4:5:6:7:8");
  EXPECT_EQ(plain.subnet(), "/128");
  EXPECT_EQ(plain.subnetMask(), 128);
  EXPECT_EQ(plain.zone(), "");
  EXPECT_EQ(plain.elidedGroups(), 0);
}

TEST(IPv6Test, TextBehindThePrefixIsDropped) {
  const IPv6 ip("fe80::1/64%eth0");
  EXPECT_TRUE(ip.valid());
  EXPECT_EQ(ip.subnetMask(), 64);
  EXPECT_EQ(ip.addressMinusSuffix(), "fe80::1");
  EXPECT_EQ(ip.zone(), "");
}

struct Row {
  std::string text;
  std::string error;  // empty for a valid address
};

TEST(IPv6Test, ValidatesTexts) {
  const std::string mask = "Invalid subnet mask";
  const std::string count = "Incorrect number of groups found";
  const std::string elision = "Too many :: groups found";
  const std::string nothing = "Error parsing groups";
  const std::string zeroes = "IPv4 addresses cannot have leading zeroes";
  const std::string regex = "Address failed regex: ";
  const std::string bad = " detected in address: ";
  const Row rows[] = {
      {"::", ""},
      {"::1", ""},
      {"1::", ""},
      {"1:2:3:4:5:6:7::", ""},
      {"::2:3:4:5:6:7:8", ""},
      {"0001:02:003:4:5:6:7:8", ""},
      {"ABCD:EF01::", ""},
      {"::1.2.3.4", ""},
      {"1:2:3:4:5:6:1.2.3.4", ""},
      {"::ffff:255.255.255.255/96", ""},
      {"::/0", ""},
      {"::/000", ""},
      {"::%", ""},
      {"::%a:b%c", ""},
      {"::1/129", mask},
      {"nonsense/999", mask},
      {"::1/1234", mask},
      {"::1/", mask},
      {"::1/x", mask},
      {"/::1", mask},
      {"::/1/2", mask},
      {"::%a/b/64", mask},
      {"::/64%/", mask},
      {"::ffff:01.2.3.4", zeroes},
      {"::ffff:1.2.3.00", zeroes},
      {"012.2.3.4", zeroes},
      {"1::g", "Bad character" + bad + "g"},
      {"1::xy z", "Bad characters" + bad + "xy z"},
      {"::1.2.3", "Bad characters" + bad + ".."},
      {"::1.2.3.256", "Bad characters" + bad + "..."},
      {"1.2.3.4:1::", "Bad characters" + bad + "..."},
      {"::1\n", "Bad character" + bad + "\n"},
      {"::1%a\nb", "Bad character" + bad + "\n"},
      {"::\xC3\xA9", "Bad character" + bad + "\xC3\xA9"},
      {"::\xC3\xA9\xF0\x9F\x98\x80", "Bad characters" + bad + "\xC3\xA9\xF0\x9F\x98\x80"},
      {"::\xFF", "Bad character" + bad + "\xFF"},
      {"::\xE9\xA0", "Bad characters" + bad + "\xE9\xA0"},
      {std::string("::\0", 3), "Bad character" + bad + std::string(1, '\0')},
      {"12345::", regex + "12345"},
      {"12345::abcdef01:1", regex + "12345 abcdef01"},
      {"1:::2", regex + ":::"},
      {"::::", regex + "::::"},
      {"1:2:3:4:5:6:7:", regex + "7:"},
      {"1234:", regex + "4:"},
      {":1", regex + ":1"},
      {":12345:::6:", regex + ":1 ::: 6:"},
      {"1::2::3", elision},
      {"::1::", elision},
      {"1:2:3:4:5:6:7:8::", nothing},
      {"::1:2:3:4:5:6:7:8", nothing},
      {"1:2:3:4::5:6:7:8", nothing},
      {"1:2:3:4::5:6:7:8:9", count},
      {"1:2:3", count},
      {"1:2:3:4:5:6:7:8:9", count},
      {"1:2:3:4:5:6:7:1.2.3.4", count},
      {"1.2.3.4", count},
      {"1", count},
      {":", count},
      {"", count},
      {"%eth0", count},
      {"/64", count},
  };
  for (const Row& row : rows) {
    const IPv6 ip(row.text);
    EXPECT_EQ(ip.error().value_or(""), row.error) << row.text;
    EXPECT_EQ(ip.valid(), row.error.empty()) << row.text;
    EXPECT_EQ(ip.parsedAddress().empty(), !ip.valid()) << row.text;
  }
}

TEST(IPv6Test, CompressesTheLongestRun) {
  const std::array<std::string, 2> rows[] = {
      {"2001:db8:0:0:1:0:0:1", "2001:db8::1:0:0:1"},
      {"2001:db8:0:1:1:1:1:1", "2001:db8:0:1:1:1:1:1"},
      {"0:0:0:0:0:0:0:0", "::"},
      {"fe80:0:0:0:0:0:0:0", "fe80::"},
      {"0:0:0:0:0:0:0:1", "::1"},
      {"0:0:1:0:0:0:1:1", "0:0:1::1:1"},
      {"1:0:0:1:0:0:0:0", "1:0:0:1::"},
      {"0:0:1:1:1:1:1:1", "::1:1:1:1:1:1"},
      {"1:1:1:1:1:1:0:0", "1:1:1:1:1:1::"},
      {"0:1:1:1:1:1:1:0", "0:1:1:1:1:1:1:0"},
      {"::FFFF:1.2.3.4", "::ffff:102:304"},
  };
  for (const auto& [text, expected] : rows) {
    EXPECT_EQ(IPv6(text).correctForm(), expected);
  }
}

TEST(IPv6Test, CorrectAndCanonicalAreOneTextEach) {
  EXPECT_TRUE(IPv6("::1").correct());
  EXPECT_TRUE(IPv6("fe80::%eth0/64").correct());
  EXPECT_FALSE(IPv6("fe80::/064").correct());
  EXPECT_FALSE(IPv6("FE80::").correct());
  EXPECT_FALSE(IPv6("::0").correct());
  EXPECT_FALSE(IPv6("nonsense").correct());
  EXPECT_TRUE(IPv6("0000:0000:0000:0000:0000:0000:0000:0001").canonical());
  EXPECT_FALSE(IPv6("::1").canonical());
  EXPECT_FALSE(IPv6("").canonical());
}

TEST(IPv6Test, HasItsForms) {
  const IPv6 ip("2001:db8::ff:1");
  EXPECT_EQ(ip.canonicalForm(), "2001:0db8:0000:0000:0000:0000:00ff:0001");
  EXPECT_EQ(ip.decimal(), "08193:03512:00000:00000:00000:00000:00255:00001");
  EXPECT_EQ(ip.data(), (Data{0x20, 1, 0x0D, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0, 1}));
  EXPECT_EQ(ip.bigInteger(), BigInt("20010db8000000000000000000ff0001", 16));
  EXPECT_EQ(ip.bitsWithStart(0, 20), "00100000000000010000");
  EXPECT_EQ(ip.bitsBase16WithStart(16, 32), "0db8");
  EXPECT_EQ(ip.bitsBase16WithStart(2, 9), "40");
  EXPECT_EQ(ip.bitsBase16WithStart(100, 200), "0ff0001");
  EXPECT_EQ(ip.bitsBase16WithStart(200, 300), "");
  EXPECT_EQ(IPv6("::1").reversedForm(),
            "1.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.0.ip6.arpa.");
  EXPECT_EQ(IPv6("2001:db8::/34").reversedForm(), "8.b.d.0.1.0.0.2.ip6.arpa.");
  EXPECT_EQ(IPv6("2001:db8::/0").reversedForm(), "ip6.arpa.");
}

TEST(IPv6Test, CarriesIPv4AtItsEnd) {
  const IPv6 ip("::ffff:1.2.3.4");
  EXPECT_TRUE(ip.v4());
  EXPECT_EQ(ip.parsedAddress(), (Texts{"0", "0", "0", "0", "0", "ffff", "102", "304"}));
  EXPECT_EQ(ip.v4inv6(), "::ffff:1.2.3.4");
  EXPECT_FALSE(ip.correct());
  EXPECT_EQ(IPv6("64:ff9b::808:808").v4inv6(), "64:ff9b::8.8.8.8");
  EXPECT_EQ(IPv6("1:2:3:4:5:6:7:8").v4inv6(), "1:2:3:4:5:6:0.7.0.8");
  EXPECT_EQ(IPv6("::").v4inv6(), "::0.0.0.0");
  IPv6 other("::");
  EXPECT_EQ(other.parsev4inv6("1::9.8.7.6"), "1::908:706");
  EXPECT_EQ(other.parsev4inv6("1::9"), "1::9");
}

TEST(IPv6Test, AnswersWhenNotValid) {
  for (const char* const text :
       {"", "::1/999", "1:2:3", "nonsense", "1::2::3", "::ffff:01.2.3.4"}) {
    const IPv6 ip(text);
    EXPECT_EQ(ip.correctForm(), std::nullopt);
    EXPECT_EQ(ip.canonicalForm() + ip.decimal() + ip.v4inv6() + ip.reversedForm(), "");
    EXPECT_EQ(ip.bigInteger(), BigInt());
    EXPECT_EQ(ip.data(), Data(16));
    EXPECT_EQ(ip.binaryZeroPad(), std::string(128, '0'));
    EXPECT_EQ(ip.mask(), std::string(128, '0'));
    EXPECT_EQ(ip.startAddress().correctForm(), "::");
    EXPECT_FALSE(ip.isInSubnet(IPv6("::/0")));
    EXPECT_FALSE(IPv6("::").isInSubnet(ip));
  }
}

TEST(IPv6Test, AgreesWithInetPtonAndNtop) {
  std::mt19937 random{6};
  constexpr std::string_view alphabet = "0123456789abcdefABCDEF::::::..g";
  int accepted = 0;
  for (int i = 0; i < 20000; ++i) {
    std::array<std::uint8_t, 16> bytes{};
    for (std::size_t group = 0; group < bytes.size(); group += 2) {
      const auto value = random() % 3 == 0 ? random() >> (random() % 32) : 0;
      bytes[group] = static_cast<std::uint8_t>(value >> 8);
      bytes[group + 1] = static_cast<std::uint8_t>(value);
    }
    std::array<char, INET6_ADDRSTRLEN> written;
    inet_ntop(AF_INET6, bytes.data(), written.data(), written.size());
    std::string text = written.data();
    ASSERT_EQ(IPv6(text).data(), Data(bytes.begin(), bytes.end())) << text;
    if (text.find('.') == std::string::npos) {
      ASSERT_EQ(IPv6(text).correctForm(), text);
    } else {
      ASSERT_EQ(IPv6(text).v4inv6(), text);
    }

    text[random() % text.size()] = alphabet[random() % alphabet.size()];
    const bool expected = inet_pton(AF_INET6, text.c_str(), bytes.data()) == 1;
    ASSERT_EQ(IPv6(text).valid(), expected) << text;
    if (expected) {
      ASSERT_EQ(IPv6(text).data(), Data(bytes.begin(), bytes.end())) << text;
      ++accepted;
    }
  }
  EXPECT_GT(accepted, 1000);
}

}  // namespace
}  // namespace quillet
