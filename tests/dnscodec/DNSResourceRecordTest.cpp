#include <gtest/gtest.h>

#include "dnscodec/DNSResourceRecord.h"
#include "tests/support/Wire.h"

namespace quillet {
namespace {

using test::hex;

TEST(DNSResourceRecordTest, LeavesOutDataThatHasNoLength) {
  DNSResourceRecord record;
  record.name = ".";
  record.data.resize(0xFFFF);
  EXPECT_EQ(record.encode().size(), 11U + 0xFFFF);
  EXPECT_EQ(record.encode()[9], 0xFF);
  EXPECT_EQ(record.copy()->encode(), record.encode());
  record.data.resize(0x10000);
  EXPECT_EQ(record.encode(), hex("00 0000 0000 00000000 0000"));
}

TEST(DNSResourceRecordTest, OfACnameReadsAndWritesItsTarget) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"01 61 00 ffff", "a", "01 61 00"},
      {"01 61 c005 ff 01 62 00", "a.b", "01 61 01 62 00"},  // a pointer into the data itself
      {"03 776562 c010", "web", "03 776562 00"},            // and one into the message
      {"03 77", "", "00 00"},
  };
  for (const auto& [data, name, written] : rows) {
    DNSResourceRecord record;
    record.name = "w";
    record.ttl = 1;
    record.data = hex(data);
    const auto cname = DNSCNAMEResourceRecord::fromResource(record);
    EXPECT_TRUE(cname->name == "w" && cname->ttl == 1);
    EXPECT_EQ(cname->canonicalName, name);
    EXPECT_EQ(cname->copy()->encodeData(), hex(written)) << data;
  }
}

TEST(DNSResourceRecordTest, OfAnOptHoldsItsFieldsInClassAndTtl) {
  DNSResourceRecord record;
  record.name = ".";
  record.type = 41;
  record.resourceClass = 4096;
  record.ttl = 0x1234FFFF;
  const auto opt = DNSOPTResourceRecord::fromResource(record);
  EXPECT_EQ(std::tuple(opt->udpPayloadSize, opt->extendedRCode, opt->version, opt->dnssecOK),
            std::tuple(4096, 0x12, 0x34, true));
  opt->data = hex("000a 0001 ff");
  EXPECT_EQ(opt->encode(), hex("00 0029 1000 12348000 0005 000a0001ff"));
  record.ttl = 0xFFFF7FFF;
  EXPECT_FALSE(DNSOPTResourceRecord::fromResource(record)->dnssecOK);
  // Only its own fields are written.
  DNSOPTResourceRecord fresh;
  fresh.name = ".";
  fresh.resourceClass = 0xFFFF;
  fresh.ttl = 0xFFFFFFFF;
  EXPECT_EQ(fresh.encode(), hex("00 0000 0000 00000000 0000"));
}

}  // namespace
}  // namespace quillet
