#include <gtest/gtest.h>

#include <string>

#include "netaddr/IPv4.h"

namespace quillet {
namespace {

TEST(IPv4Test, ValidatesTexts) {
  const std::string none;
  const std::string mask = "Invalid subnet mask";
  const std::string invalid = "Invalid IPv4 Address";
  const std::pair<std::string, std::string> rows[] = {
      {"255.255.255.255", none},
      {"192.168.001.1", none},
      {"09.00.000.199", none},
      {"1.2.3.4/00", none},
      {"1.2.3.4/32", none},
      {"1.2.3.4/33", mask},
      {"nonsense/99", mask},
      {"1.2.3.4/123", invalid},
      {"1.2.3.4/", invalid},
      {"1.2.3.4/8/8", invalid},
      {"256.1.1.1", invalid},
      {"1.1.1.0001", invalid},
      {"1.1.1", invalid},
      {"1.1.1.", invalid},
      {".1.1.1", invalid},
      {"1.1.1.1.1", invalid},
      {" 1.1.1.1", invalid},
      {"1.1.1.1\n", invalid},
      {std::string("1.1.1.1\0", 8), invalid},
      {"", invalid},
      {std::string(1000000, '.'), invalid},
  };
  for (const auto& [text, error] : rows) {
    const IPv4 ip(text);
    EXPECT_EQ(ip.error().value_or(none), error) << text.substr(0, 40);
    EXPECT_EQ(ip.valid(), error.empty());
  }
}

TEST(IPv4Test, CorrectMeansWrittenShortest) {
  EXPECT_TRUE(IPv4("192.168.1.1/0").correct());
  EXPECT_TRUE(IPv4("1.2.3.4/32").correct());
  for (const char* const text : {"192.168.001.1", "192.168.1.1/08", "1.1.1.1/33", "256.01.1.1"}) {
    EXPECT_FALSE(IPv4(text).correct()) << text;
  }
}

TEST(IPv4Test, HasItsForms) {
  EXPECT_EQ(IPv4("1.2.3.4").v6Group(), "102:304");
  EXPECT_EQ(IPv4("10.0.0.255").v6Group(), "a00:ff");
  EXPECT_EQ(IPv4("255.171.0.9").hex(), "ff:ab:00:09");
  EXPECT_EQ(IPv4("010.001.000.09").reversedForm(), "9.0.1.10.in-addr.arpa.");
  EXPECT_EQ(IPv4::ipv4FromHex("0a:1:2:3").correctForm(), "0.0.161.35");
  EXPECT_EQ(IPv4::ipv4FromHex("1.020304").error(), "Invalid IPv4 Address");
}

TEST(IPv4Test, AnswersWhenNotValid) {
  for (const std::string text : {"256.1.1.1", "1.2.3", "", "1.2.3.4/99", "99999999999999."}) {
    const IPv4 ip(text);
    EXPECT_EQ(ip.bigInteger(), BigInt());
    EXPECT_EQ(ip.data().size(), 4U);
    EXPECT_FALSE(ip.isInSubnet(IPv4("0.0.0.0/0")));
    EXPECT_FALSE(IPv4("0.0.0.0").isInSubnet(ip));
  }
  EXPECT_EQ(IPv4("256.1.1.1").correctForm(), "256.1.1.1");
  EXPECT_EQ(IPv4("1.2.3.4/99").correctForm(), std::nullopt);
  EXPECT_EQ(IPv4("1.2.3.4/99").reversedForm(), "");
}

}  // namespace
}  // namespace quillet
