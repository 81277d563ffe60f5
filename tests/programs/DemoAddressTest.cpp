#include <gtest/gtest.h>

#include "programs/quillet_demo_filter/DemoAddress.h"

namespace quillet {
namespace {

TEST(DemoAddressTest, HashIsThePublishedOne) {
  // Values that the authors of FNV publish for these texts.
  EXPECT_EQ(nameHash(""), 0xCBF29CE484222325U);
  EXPECT_EQ(nameHash("a"), 0xAF63DC4C8601EC8CU);
  EXPECT_EQ(nameHash("foobar"), 0x85944171F73967E8U);
}

TEST(DemoAddressTest, AddressesHoldTheHash) {
  EXPECT_EQ(demoIPv4("foobar").presentation(), "198.19.103.232");  // ...967E8: 1 67 E8
  EXPECT_EQ(demoIPv4("a").presentation(), "198.19.236.140");       // ...1EC8C: 1 EC 8C
  EXPECT_EQ(demoIPv4("").presentation(), "198.18.35.37");          // ...22325: 0 23 25
  EXPECT_EQ(demoIPv6("foobar").presentation(), "2001:db8::8594:4171:f739:67e8");
}

}  // namespace
}  // namespace quillet
