// The address classes against address_vectors.txt, written by make_address_vectors.py beside it.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "netaddr/IPAddress.h"

namespace quillet {
namespace {

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

TEST(AddressVectorsTest, AgreesWithPython) {
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

}  // namespace
}  // namespace quillet
