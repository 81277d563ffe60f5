#include <gtest/gtest.h>

#include "netaddr/DNSAResourceRecord.h"
#include "tests/netaddr/Thrown.h"
#include "tests/support/Wire.h"

namespace quillet {
namespace {

using test::hex;

std::shared_ptr<DNSAResourceRecord> typedRecordOf(const platform::Data& address) {
  DNSResourceRecord record;
  record.name = "a.b";
  record.type = 1;
  record.resourceClass = 1;
  record.ttl = 300;
  record.data = address;
  return DNSAResourceRecord::fromResource(record);
}

TEST(DNSAResourceRecordTest, HoldsItsDataAsAnAddress) {
  const auto typed = typedRecordOf(hex("5db8d822"));
  EXPECT_EQ(typed->ip->correctForm(), "93.184.216.34");
  EXPECT_EQ(typed->encode(), hex("01 61 01 62 00 0001 0001 0000012c 0004 5db8d822"));
  typed->ip = IPAddress("10.0.0.1");
  EXPECT_EQ(typed->encodeData(), hex("0a000001"));

  const auto data = hex("5db8d822 00000000 00000000 00000000");
  const auto typed6 = typedRecordOf(data);
  EXPECT_EQ(typed6->ip->correctForm(), "5db8:d822::");
  EXPECT_EQ(typed6->encodeData(), data);
  EXPECT_TRUE(thrownBy([] { typedRecordOf(hex("5db8d8")); }).starts_with("ipInvalidLength: "));
}

}  // namespace
}  // namespace quillet
