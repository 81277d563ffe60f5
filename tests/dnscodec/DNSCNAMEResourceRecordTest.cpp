#include <gtest/gtest.h>

#include "dnscodec/DNSCNAMEResourceRecord.h"
#include "tests/support/Wire.h"

namespace quillet {

namespace {

using test::hex;

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
      {"nothing", "", "", "00 00"},
  };
  for (const auto& [what, data, name, written] : rows) {
    DNSResourceRecord record;
    record.name = "w";
    record.type = 5;
    record.resourceClass = 1;
    record.data = hex(data);
    const auto cname = DNSCNAMEResourceRecord::fromResource(record);
    EXPECT_EQ(cname->canonicalName, name) << what;
    EXPECT_EQ(cname->copy()->encodeData(), hex(written)) << what;
  }
}

}  // namespace

}  // namespace quillet
