#include "netaddr/IPv6.h"
#include "tests/support/Test.h"

namespace quillet::test {

TEST(IPv6Test, ReadsTexts) {
  const std::string regex = "Address failed regex: ";
  const std::string bad = "Bad character detected in address: ";
  const std::string bads = "Bad characters detected in address: ";
  const std::pair<std::optional<std::string>, Texts> rows[] = {
      {std::nullopt,
       {"1:2:3:4:5:6:7::", "0001:02:003:4:5:6:7:8", "::ffff:255.255.255.255/96", "::%a:b%c"}},
      {"Invalid subnet mask",
       {"::1/129", "nonsense/999", "::1/0064", "::1/", "/::1", "::/1/2", "::%a/b/64", "/64/::"}},
      {"IPv4 addresses cannot have leading zeroes", {"::ffff:01.2.3.4"}},
      {bad + "g", {"1::g"}},
      {bads + "xy z", {"1::xy z"}},
      {bads + "...", {"1.2.3.4:1::"}},
      {bad + "\n", {"::1%a\nb"}},
      {bad + "\r", {"::1%a\rb"}},
      {bad + "\xC3\xA9", {"::\xC3\xA9"}},
      {bads + "\xE9\xA0", {"::\xE9\xA0"}},
      {bad + std::string(1, '\0'), {std::string("::\0", 3)}},
      {regex + "12345 abcdef01", {"12345::abcdef01:1"}},
      {regex + ":::", {"1:::2"}},
      {regex + "7:", {"1:2:3:4:5:6:7:"}},
      {regex + ":1 ::: 6:", {":12345:::6:"}},
      {"Too many :: groups found", {"1::2::3"}},
      {"Error parsing groups", {"1:2:3:4:5:6:7:8::", "::1:2:3:4:5:6:7:8"}},
      {"Incorrect number of groups found",
       {"1:2:3:4::5:6:7:8:9", "1:2:3", "1:2:3:4:5:6:7:8:9", "1:2:3:4:5:6:7:1.2.3.4", ":", ""}}};
  for (const auto& [error, texts] : rows) {
    for (const std::string& text : texts) {
      const IPv6 ip(text);
      EXPECT_EQ(ip.error(), error) << text;
      EXPECT_EQ(ip.correctForm().has_value(), ip.valid());
      if (error) {
        EXPECT_EQ(ip.canonicalForm() + ip.decimal() + ip.v4inv6() + ip.reversedForm(), "");
        EXPECT_TRUE(ip.bigInteger() == BigInt() && ip.data() == Data(16));
        EXPECT_FALSE(ip.correct() || ip.canonical() || IPv6("::").isInSubnet(ip));
        EXPECT_FALSE(ip.valid() || ip.isInSubnet(IPv6("::/0")) || !ip.parsedAddress().empty());
      }
    }
  }
}

TEST(IPv6Test, ReadsSuffixesElisionAndFewerGroups) {
  const IPv6 ip("2001:DB8::1%eth0/64");
  EXPECT_EQ(ip.addressMinusSuffix() + ip.zone(), "2001:DB8::1%eth0");
  EXPECT_EQ(std::tuple(ip.elidedGroups(), ip.elisionBegin(), ip.elisionEnd()), std::tuple(5, 2, 7));
  const IPv6 dropped("1:2:3:4:5:6:7:8/64%eth0");
  EXPECT_TRUE(dropped.valid() && dropped.subnetMask() == 64 && dropped.elisionBegin() == 0);
  EXPECT_EQ(dropped.addressMinusSuffix() + dropped.zone(), "1:2:3:4:5:6:7:8");
  const IPv6 six("1:2::", 6);
  EXPECT_TRUE(six.correctForm() == "1:2::" && six.elidedGroups() == 4);
  EXPECT_EQ(six.data(), (Data{0, 0, 0, 0, 0, 1, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(IPv6("::", 9).error(), "Incorrect number of groups found");
}

TEST(IPv6Test, HasItsForms) {
  const IPv6 ip("2001:db8::ff:1");
  EXPECT_EQ(ip.decimal(), "08193:03512:00000:00000:00000:00000:00255:00001");
  EXPECT_EQ(ip.canonicalForm(), "2001:0db8:0000:0000:0000:0000:00ff:0001");
  EXPECT_TRUE(!ip.canonical() && IPv6(ip.canonicalForm()).canonical());
  EXPECT_EQ(ip.bitsWithStart(0, 20), "00100000000000010000");
  EXPECT_EQ(ip.bitsBase16WithStart(16, 32) + ip.bitsBase16WithStart(2, 9), "0db840");
  EXPECT_EQ(ip.bitsBase16WithStart(99, 200) + ip.bitsBase16WithStart(200, 300), "00ff0001");
  EXPECT_TRUE(IPv6("fe80::%eth0/64").correct() && !IPv6("fe80::/064").correct());
  EXPECT_EQ(IPv6::compact({"1", "0", "0", "2"}, {1, 3}), (Texts{"1", "", "2"}));
  EXPECT_EQ(IPv6::compact({"1", "0"}, {7, 9}), (Texts{"1", "0", ""}));
}

TEST(IPv6Test, CarriesIPv4AtItsEnd) {
  const IPv6 ip("::ffff:1.2.3.4");
  EXPECT_TRUE(ip.v4() && !ip.correct() && ip.correctForm() == "::ffff:102:304");
  EXPECT_EQ(IPv6("64:ff9b::808:808").v4inv6(), "64:ff9b::8.8.8.8");
  EXPECT_EQ(IPv6("1:2:3:4:5:6:7:8").v4inv6(), "1:2:3:4:5:6:0.7.0.8");
  IPv6 other("::");
  EXPECT_EQ(other.parsev4inv6("1::9.8.7.6"), "1::908:706");
  EXPECT_EQ(other.parsev4inv6("1::9"), "1::9");
}

}  // namespace quillet::test
