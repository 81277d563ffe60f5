#include <gtest/gtest.h>

#include "dnscodec/DNSResourceRecord.h"
#include "dnscodec/DNSTypedResourceRecord.h"
#include "tests/support/Wire.h"

namespace quillet {

namespace {

using test::hex;

/// A record with one octet of RDATA, as another room would write a kind of its own.
class OctetRecord final : public DNSTypedResourceRecord<OctetRecord> {
 public:
  void decodeFromResource(const DNSResourceRecord& record) override { octet = record.data.at(0); }
  [[nodiscard]] platform::Data encodeData() const override { return {octet}; }

  std::uint8_t octet = 0;
};

void fill(DNSResourceRecord& record) {
  record.name = "a.b";
  record.type = 0x0102;
  record.resourceClass = 0x0304;
  record.ttl = 0x05060708;
  record.data = hex("09");
}

TEST(DNSResourceRecord, WritesAllItsFields) {
  DNSResourceRecord record;
  fill(record);
  EXPECT_EQ(record.encode(), hex("01 61 01 62 00 0102 0304 05060708 0001 09"));
  EXPECT_EQ(record.encodeData(), hex("09"));
}

TEST(DNSResourceRecord, LeavesOutDataThatHasNoLength) {
  DNSResourceRecord record;
  record.name = ".";
  record.data.resize(0xFFFF);
  EXPECT_EQ(record.encode().size(), 11U + 0xFFFF);
  EXPECT_EQ(record.encode()[9], 0xFF);
  record.data.resize(0x10000);
  EXPECT_EQ(record.encode(), hex("00 0000 0000 00000000 0000"));
}

TEST(DNSResourceRecord, BecomesARecordOfAKind) {
  DNSResourceRecord record;
  fill(record);
  const auto octet = OctetRecord::fromResource(record);
  EXPECT_EQ(octet->octet, 9);
  octet->octet = 7;
  const auto copy = octet->copy();
  EXPECT_EQ(copy->encode(), hex("01 61 01 62 00 0102 0304 05060708 0001 07"));
}

}  // namespace

}  // namespace quillet
