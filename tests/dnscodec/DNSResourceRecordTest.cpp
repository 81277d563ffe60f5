// Records on their own: generic ones, and the kinds that are made of them.

#include <gtest/gtest.h>

#include "dnscodec/DNSResourceRecord.h"
#include "tests/support/Wire.h"

namespace quillet {

namespace {

using test::hex;

TEST(DNSResourceRecord, LeavesOutDataThatHasNoLength) {
  DNSResourceRecord record;
  record.name = ".";
  record.data.resize(0xFFFF);
  EXPECT_EQ(record.encode().size(), 11U + 0xFFFF);
  EXPECT_EQ(record.encode()[9], 0xFF);
  EXPECT_EQ(record.copy()->encode(), record.encode());
  record.data.resize(0x10000);
  EXPECT_EQ(record.encode(), hex("00 0000 0000 00000000 0000"));
}

TEST(DNSCNAMEResourceRecord, ReadsAndWritesItsTarget) {
  struct Row {
    const char* what;
    const char* data;
    std::string name;
    const char* written;
  };
  const Row rows[] = {
      {"a name", "03 776562 01 61 00", "web.a", "03 776562 01 61 00"},
      {"octets behind it", "01 61 00 ffff", "a", "01 61 00"},
      {"a pointer into the data itself", "01 61 c005 ff 01 62 00", "a.b", "01 61 01 62 00"},
      {"a pointer into the message", "03 776562 c010", "web", "03 776562 00"},
      {"no name", "03 77", "", "00 00"},
  };
  for (const auto& [what, data, name, written] : rows) {
    DNSResourceRecord record;
    record.name = "w";
    record.ttl = 1;
    record.data = hex(data);
    const auto cname = DNSCNAMEResourceRecord::fromResource(record);
    EXPECT_EQ(cname->name, "w") << what;
    EXPECT_EQ(cname->ttl, 1U) << what;
    EXPECT_EQ(cname->canonicalName, name) << what;
    EXPECT_EQ(cname->copy()->encodeData(), hex(written)) << what;
  }
}

TEST(DNSOPTResourceRecord, HoldsItsFieldsInClassAndTtl) {
  DNSResourceRecord record;
  record.name = ".";
  record.type = 41;
  record.resourceClass = 4096;
  record.ttl = 0x1234FFFF;
  const auto opt = DNSOPTResourceRecord::fromResource(record);
  EXPECT_EQ(opt->udpPayloadSize, 4096);
  EXPECT_EQ(opt->extendedRCode, 0x12);
  EXPECT_EQ(opt->version, 0x34);
  EXPECT_TRUE(opt->dnssecOK);
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
