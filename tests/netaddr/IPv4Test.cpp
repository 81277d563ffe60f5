#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

#include "netaddr/IPv4.h"

namespace quillet {
namespace {

using platform::Data;

TEST(IPv4Test, ReadsAnAddressWithItsSubnet) {
  const IPv4 ip("192.168.1.1/24");
  EXPECT_TRUE(ip.valid());
  EXPECT_FALSE(ip.error());
  EXPECT_EQ(ip.address(), "192.168.1.1/24");
  EXPECT_EQ(ip.addressMinusSufix(), "192.168.1.1");
  EXPECT_EQ(ip.parsedAddress(), (std::vector<std::string>{"192", "168", "1", "1"}));
  EXPECT_EQ(ip.subnetMask(), 24);
  EXPECT_EQ(ip.subnet(), "/24");
  EXPECT_EQ(ip.parsedSubnet(), "24");
  EXPECT_EQ(ip.groups(), 4);
  EXPECT_TRUE(ip.v4());
  EXPECT_TRUE(ip.correct());
  EXPECT_EQ(ip.mask(), "110000001010100000000001");

  const IPv4 plain("1.2.3.4");
  EXPECT_EQ(plain.subnet(), "/32");
  EXPECT_EQ(plain.subnetMask(), 32);
  EXPECT_EQ(plain.parsedSubnet(), "");
}

struct Row {
  std::string text;
  std::string error;  // empty for a valid address
};

TEST(IPv4Test, ValidatesTexts) {
  const std::string invalid = "Invalid IPv4 Address";
  const Row rows[] = {
      {"0.0.0.0", ""},
      {"255.255.255.255", ""},
      {"192.168.001.1", ""},
      {"09.00.000.199", ""},
      {"1.2.3.4/0", ""},
      {"1.2.3.4/00", ""},
      {"1.2.3.4/32", ""},
      {"1.2.3.4/33", "Invalid subnet mask"},
      {"nonsense/99", "Invalid subnet mask"},
      {"1.2.3.4/123", invalid},
      {"1.2.3.4/", invalid},
      {"1.2.3.4/a", invalid},
      {"1.2.3.4/8/8", invalid},
      {"256.1.1.1", invalid},
      {"1.1.1.260", invalid},
      {"1.1.1.300", invalid},
      {"1.1.1.0001", invalid},
      {"1.1.1", invalid},
      {"1.1.1.", invalid},
      {".1.1.1", invalid},
      {"1..1.1", invalid},
      {"1.1.1.1.", invalid},
      {"1.1.1.1.1", invalid},
      {" 1.1.1.1", invalid},
      {"1.1.1.1\n", invalid},
      {"1.1.1.-1", invalid},
      {"1.1.1.0x1", invalid},
      {std::string("1.1.1.1\0", 8), invalid},
      {"\xD9\xA1.1.1.1", invalid},
      {"", invalid},
      {"/", invalid},
      {"/8", invalid},
      {std::string(1000000, '.'), invalid},
      {std::string(1000000, '/'), invalid},
  };
  for (const Row& row : rows) {
    const IPv4 ip(row.text);
    EXPECT_EQ(ip.error().value_or(""), row.error) << row.text.substr(0, 40);
    EXPECT_EQ(ip.valid(), row.error.empty());
  }
}

TEST(IPv4Test, CorrectMeansWrittenShortest) {
  EXPECT_EQ(IPv4("192.168.001.1").correctForm(), "192.168.1.1");
  for (const char* const text : {"192.168.1.1", "192.168.1.1/24", "192.168.1.1/0", "1.2.3.4/32"}) {
    EXPECT_TRUE(IPv4(text).correct()) << text;
  }
  for (const char* const text : {"192.168.001.1", "192.168.1.1/08", "1.1.1.1/33", "256.01.1.1"}) {
    EXPECT_FALSE(IPv4(text).correct()) << text;
  }
}

TEST(IPv4Test, HasItsForms) {
  const IPv4 ip("1.2.3.4");
  EXPECT_EQ(ip.reversedForm(), "4.3.2.1.in-addr.arpa.");
  EXPECT_EQ(ip.v6Group(), "102:304");
  EXPECT_EQ(ip.hex(), "01:02:03:04");
  EXPECT_EQ(ip.data(), (Data{1, 2, 3, 4}));
  EXPECT_EQ(ip.bigInteger(), BigInt(0x01020304));
  EXPECT_EQ(IPv4("10.0.0.255").v6Group(), "a00:ff");
  EXPECT_EQ(IPv4("255.171.0.9").hex(), "ff:ab:00:09");
  EXPECT_EQ(IPv4("010.001.000.09").reversedForm(), "9.0.1.10.in-addr.arpa.");
}

TEST(IPv4Test, AnswersWhenNotValid) {
  for (const std::string text :
       {"256.1.1.1", "1.2.3", "", "x", "1.2.3.4/99", "99999999999999.", "-1.a.0.7"}) {
    const IPv4 ip(text);
    EXPECT_EQ(ip.bigInteger(), BigInt());
    EXPECT_EQ(ip.data().size(), 4U);
    EXPECT_EQ(ip.binaryZeroPad(), std::string(32, '0'));
    EXPECT_TRUE(ip.startAddress().valid());
    EXPECT_TRUE(ip.endAddress().valid());
    EXPECT_FALSE(ip.isInSubnet(IPv4("0.0.0.0/0")));
    EXPECT_FALSE(IPv4("0.0.0.0").isInSubnet(ip));
    EXPECT_FALSE(ip.v6Group().empty());
  }
  EXPECT_EQ(IPv4("256.1.1.1").correctForm(), "256.1.1.1");
  EXPECT_TRUE(IPv4("256.1.1.1").correct());
  EXPECT_EQ(IPv4("1.2.3.4.example.com").parsedAddress().size(), 6U);
  EXPECT_EQ(IPv4("1.2.3.4/99").correctForm(), std::nullopt);
  EXPECT_EQ(IPv4("1.2.3.4/99").reversedForm(), "");
  EXPECT_EQ(IPv4("1.2.3.4/99").hex(), "");
}

TEST(IPv4Test, AgreesWithInetPtonAndNtop) {
  std::mt19937 random{4};
  constexpr std::string_view alphabet = "0123456789..../a";
  int accepted = 0;
  for (int i = 0; i < 20000; ++i) {
    std::array<std::uint8_t, 4> bytes;
    for (std::uint8_t& byte : bytes) {
      byte = static_cast<std::uint8_t>(random());
    }
    std::array<char, INET_ADDRSTRLEN> written;
    inet_ntop(AF_INET, bytes.data(), written.data(), written.size());
    std::string text = written.data();
    EXPECT_EQ(IPv4(text).data(), Data(bytes.begin(), bytes.end()));
    EXPECT_EQ(IPv4(text).correctForm(), text);

    text[random() % text.size()] = alphabet[random() % alphabet.size()];
    if (text.find('/') == std::string::npos &&
        inet_pton(AF_INET, text.c_str(), bytes.data()) == 1) {
      EXPECT_TRUE(IPv4(text).correct()) << text;
      EXPECT_EQ(IPv4(text).data(), Data(bytes.begin(), bytes.end())) << text;
      ++accepted;
    } else {
      EXPECT_FALSE(IPv4(text).valid() && IPv4(text).correct() && IPv4(text).subnetMask() == 32)
          << text;
    }
  }
  EXPECT_GT(accepted, 1000);
}

}  // namespace
}  // namespace quillet
