#include <gtest/gtest.h>

#include <string>

#include "netaddr/IPv6.h"

namespace quillet {
namespace {

using platform::Data;

TEST(IPv6Test, ValidatesTexts) {
  const std::string none;
  const std::string mask = "Invalid subnet mask";
  const std::string count = "Incorrect number of groups found";
  const std::string elision = "Too many :: groups found";
  const std::string nothing = "Error parsing groups";
  const std::string zeroes = "IPv4 addresses cannot have leading zeroes";
  const std::string regex = "Address failed regex: ";
  const std::string bad = "Bad character detected in address: ";
  const std::string bads = "Bad characters detected in address: ";
  const std::pair<std::string, std::string> rows[] = {
      {"1:2:3:4:5:6:7::", none},
      {"0001:02:003:4:5:6:7:8", none},
      {"1:2:3:4:5:6:1.2.3.4", none},
      {"::ffff:255.255.255.255/96", none},
      {"::/000", none},
      {"::%a:b%c", none},
      {"::1/129", mask},
      {"nonsense/999", mask},
      {"::1/0064", mask},
      {"::1/", mask},
      {"/::1", mask},
      {"::/1/2", mask},
      {"::%a/b/64", mask},
      {"::ffff:01.2.3.4", zeroes},
      {"1::g", bad + "g"},
      {"1::xy z", bads + "xy z"},
      {"1.2.3.4:1::", bads + "..."},
      {"::1%a\nb", bad + "\n"},
      {"::\xC3\xA9\xF0\x9F\x98\x80", bads + "\xC3\xA9\xF0\x9F\x98\x80"},
      {"::\xE9\xA0", bads + "\xE9\xA0"},
      {std::string("::\0", 3), bad + std::string(1, '\0')},
      {"12345::abcdef01:1", regex + "12345 abcdef01"},
      {"1:::2", regex + ":::"},
      {"1:2:3:4:5:6:7:", regex + "7:"},
      {":12345:::6:", regex + ":1 ::: 6:"},
      {"1::2::3", elision},
      {"1:2:3:4:5:6:7:8::", nothing},
      {"::1:2:3:4:5:6:7:8", nothing},
      {"1:2:3:4::5:6:7:8:9", count},
      {"1:2:3", count},
      {"1:2:3:4:5:6:7:8:9", count},
      {"1:2:3:4:5:6:7:1.2.3.4", count},
      {":", count},
      {"", count},
  };
  for (const auto& [text, error] : rows) {
    const IPv6 ip(text);
    EXPECT_EQ(ip.error().value_or(none), error) << text;
    EXPECT_EQ(ip.valid(), error.empty()) << text;
    EXPECT_EQ(ip.parsedAddress().empty(), !ip.valid()) << text;
  }
}

TEST(IPv6Test, ReadsSuffixesAndElision) {
  const IPv6 ip("2001:DB8::1%eth0/64");
  EXPECT_EQ(ip.addressMinusSuffix(), "2001:DB8::1");
  EXPECT_EQ(ip.zone(), "%eth0");
  EXPECT_EQ(ip.elidedGroups(), 5);
  EXPECT_EQ(ip.elisionBegin(), 2);
  EXPECT_EQ(ip.elisionEnd(), 7);
  const IPv6 dropped("fe80::1/64%eth0");
  EXPECT_TRUE(dropped.valid());
  EXPECT_EQ(dropped.subnetMask(), 64);
  EXPECT_EQ(dropped.addressMinusSuffix(), "fe80::1");
  EXPECT_EQ(dropped.zone(), "");
}

TEST(IPv6Test, ReadsAsManyGroupsAsAsked) {
  EXPECT_EQ(IPv6("1:2::", 6).correctForm(), "1:2::");
  EXPECT_EQ(IPv6("1:2::", 6).elidedGroups(), 4);
  EXPECT_EQ(IPv6("::", 9).error(), "Incorrect number of groups found");
}

TEST(IPv6Test, CorrectAndCanonicalAreOneTextEach) {
  EXPECT_TRUE(IPv6("fe80::%eth0/64").correct());
  EXPECT_FALSE(IPv6("fe80::/064").correct());
  EXPECT_FALSE(IPv6("nonsense").correct());
  EXPECT_FALSE(IPv6("").canonical());
}

TEST(IPv6Test, HasItsForms) {
  const IPv6 ip("2001:db8::ff:1");
  EXPECT_EQ(ip.decimal(), "08193:03512:00000:00000:00000:00000:00255:00001");
  EXPECT_EQ(ip.bitsWithStart(0, 20), "00100000000000010000");
  EXPECT_EQ(ip.bitsBase16WithStart(16, 32), "0db8");
  EXPECT_EQ(ip.bitsBase16WithStart(2, 9), "40");
  EXPECT_EQ(ip.bitsBase16WithStart(100, 200), "0ff0001");
  EXPECT_EQ(ip.bitsBase16WithStart(200, 300), "");
}

TEST(IPv6Test, CarriesIPv4AtItsEnd) {
  const IPv6 ip("::ffff:1.2.3.4");
  EXPECT_TRUE(ip.v4());
  EXPECT_EQ(ip.correctForm(), "::ffff:102:304");
  EXPECT_EQ(ip.v4inv6(), "::ffff:1.2.3.4");
  EXPECT_FALSE(ip.correct());
  EXPECT_EQ(IPv6("64:ff9b::808:808").v4inv6(), "64:ff9b::8.8.8.8");
  EXPECT_EQ(IPv6("1:2:3:4:5:6:7:8").v4inv6(), "1:2:3:4:5:6:0.7.0.8");
  IPv6 other("::");
  EXPECT_EQ(other.parsev4inv6("1::9.8.7.6"), "1::908:706");
  EXPECT_EQ(other.parsev4inv6("1::9"), "1::9");
}

TEST(IPv6Test, AnswersWhenNotValid) {
  for (const char* const text : {"", "::1/999", "1:2:3", "nonsense", "::ffff:01.2.3.4"}) {
    const IPv6 ip(text);
    EXPECT_EQ(ip.correctForm(), std::nullopt);
    EXPECT_EQ(ip.canonicalForm() + ip.decimal() + ip.v4inv6() + ip.reversedForm(), "");
    EXPECT_EQ(ip.bigInteger(), BigInt());
    EXPECT_EQ(ip.data(), Data(16));
    EXPECT_FALSE(ip.isInSubnet(IPv6("::/0")));
    EXPECT_FALSE(IPv6("::").isInSubnet(ip));
  }
}

}  // namespace
}  // namespace quillet
