#include <gtest/gtest.h>

#include "netaddr/IPv4.h"
#include "netaddr/PaddedText.h"

namespace quillet {
namespace {

TEST(IPv4Test, ReadsTexts) {
  const std::pair<std::optional<std::string>, std::vector<std::string>> rows[] = {
      {std::nullopt, {"192.168.001.1", "09.00.000.255", "1.2.3.4/00", "1.2.3.4/32"}},
      {"Invalid subnet mask", {"1.2.3.4/33", "nonsense/99"}},
      {"Invalid IPv4 Address",
       {"1.2.3.4/123", "1.2.3.4/", "1.2.3.4/8/8", "1.2.3.4/a", "256.1.1.1", "1.1.1.0001", "1.1.1",
        "1.1.1.1.1", "1.1.1.1\n", std::string("1.1.1.1\0", 8), "", std::string(1000000, '.')}},
  };
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

}  // namespace
}  // namespace quillet
