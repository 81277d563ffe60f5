#include <gtest/gtest.h>

#include "netaddr/DNSAResourceRecord.h"
#include "tests/netaddr/Thrown.h"
#include "tests/support/Wire.h"

namespace quillet {
namespace {

TEST(DNSAResourceRecordTest, HoldsItsDataAsAnAddress) {
  DNSResourceRecord record;
  record.name = "a";
  record.type = record.resourceClass = 1;
  record.ttl = 300;
  record.data = test::hex("5db8d822");
  const auto typed = DNSAResourceRecord::fromResource(record);
  EXPECT_EQ(typed->ip->correctForm(), "93.184.216.34");
  EXPECT_EQ(typed->encode(), test::hex("01 61 00 0001 0001 0000012c 0004 5db8d822"));
  record.data.resize(16);
  EXPECT_EQ(DNSAResourceRecord::fromResource(record)->ip->correctForm(), "5db8:d822::");
  EXPECT_EQ(DNSAResourceRecord::fromResource(record)->encodeData(), record.data);
  record.data.resize(3);
  EXPECT_TRUE(
      thrownBy([&] { DNSAResourceRecord::fromResource(record); }).starts_with("ipInvalidLength: "));
}

}  // namespace
}  // namespace quillet
