#include <gtest/gtest.h>

#include "dnscodec/DNSOPTResourceRecord.h"
#include "tests/support/Wire.h"

namespace quillet {

namespace {

using test::hex;

TEST(DNSOPTResourceRecord, WritesItsFieldsAsClassAndTtl) {
  DNSOPTResourceRecord record;
  record.name = ".";
  record.type = 41;
  record.resourceClass = 0xFFFF;
  record.ttl = 0xFFFFFFFF;
  record.data = hex("000a 0001 ff");
  EXPECT_EQ(record.encode(), hex("00 0029 0000 00000000 0005 000a0001ff"));
  record.udpPayloadSize = 4096;
  record.extendedRCode = 0x12;
  record.version = 0x34;
  record.dnssecOK = true;
  EXPECT_EQ(record.encode(), hex("00 0029 1000 12348000 0005 000a0001ff"));
  EXPECT_EQ(record.copy()->encode(), record.encode());
}

TEST(DNSOPTResourceRecord, TakesItsFieldsFromClassAndTtl) {
  DNSResourceRecord record;
  record.resourceClass = 1232;
  record.ttl = 0x12348001;
  const auto opt = DNSOPTResourceRecord::fromResource(record);
  EXPECT_EQ(opt->udpPayloadSize, 1232);
  EXPECT_EQ(opt->extendedRCode, 0x12);
  EXPECT_EQ(opt->version, 0x34);
  EXPECT_TRUE(opt->dnssecOK);
  record.ttl = 0xFFFF7FFF;
  EXPECT_FALSE(DNSOPTResourceRecord::fromResource(record)->dnssecOK);
}

}  // namespace

}  // namespace quillet
