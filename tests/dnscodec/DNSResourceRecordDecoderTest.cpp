#include <gtest/gtest.h>

#include "dnscodec/DNSOPTResourceRecord.h"
#include "dnscodec/DNSResourceRecordDecoder.h"
#include "tests/support/Wire.h"

namespace quillet {

namespace {

using test::hex;

std::shared_ptr<DNSResourceRecord> decoded(platform::DataView bytes, std::uint32_t offset = 0) {
  DNSResourceRecordDecoder decoder;
  decoder.decodeResourceInBuffer(bytes, offset);
  return decoder.resource;
}

TEST(DNSResourceRecordDecoder, ReadsEachField) {
  const auto bytes = hex("ff 01 61 00 0001 0003 01020304 0002 aabb ff");
  std::uint32_t offset = 1;
  DNSResourceRecordDecoder decoder;
  decoder.decodeResourceInBuffer(bytes, offset);
  ASSERT_TRUE(decoder.resource);
  EXPECT_EQ(decoder.resource->name, "a");
  EXPECT_EQ(decoder.resource->type, 1);
  EXPECT_EQ(decoder.resource->resourceClass, 3);
  EXPECT_EQ(decoder.resource->ttl, 0x01020304U);
  EXPECT_EQ(decoder.resource->data, hex("aabb"));
  EXPECT_EQ(offset, 16U);
}

TEST(DNSResourceRecordDecoder, TakesRecordsWithoutData) {
  const auto bytes = hex("00 0001 0001 00000000 0000");
  const auto record = decoded(bytes);
  ASSERT_TRUE(record);
  EXPECT_TRUE(record->data.empty());
  EXPECT_EQ(record->encode(), bytes);
}

}  // namespace

}  // namespace quillet
