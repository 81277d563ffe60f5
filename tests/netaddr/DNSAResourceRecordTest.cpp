#include <gtest/gtest.h>

#include "dnscodec/DNSMessageDecoder.h"
#include "netaddr/DNSAResourceRecord.h"
#include "tests/netaddr/Thrown.h"

namespace quillet {
namespace {

using platform::Data;

// A answer of 93.184.216.34 for the name a.b, TTL 300.
const Data kRecord = {1, 'a', 1, 'b', 0, 0, 1, 0, 1, 0, 0, 1, 0x2C, 0, 4, 93, 184, 216, 34};

std::shared_ptr<DNSResourceRecord> decodedRecord(const Data& record) {
  Data message = {0, 1, 0x80, 0, 0, 0, 0, 1, 0, 0, 0, 0};
  message.insert(message.end(), record.begin(), record.end());
  DNSMessageDecoder decoder;
  decoder.decodeMessageInBuffer(message);
  return decoder.message->answers.at(0);
}

TEST(DNSAResourceRecordTest, IsTypedByFromResource) {
  const auto generic = decodedRecord(kRecord);
  EXPECT_EQ(dynamic_cast<const DNSAResourceRecord*>(generic.get()), nullptr);

  const auto typed = DNSAResourceRecord::fromResource(*generic);
  EXPECT_EQ(typed->name, "a.b");
  EXPECT_EQ(typed->type, 1);
  EXPECT_EQ(typed->resourceClass, 1);
  EXPECT_EQ(typed->ttl, 300U);
  EXPECT_EQ(typed->ip->correctForm(), "93.184.216.34");
  EXPECT_EQ(typed->encodeData(), (Data{93, 184, 216, 34}));
  EXPECT_EQ(typed->encode(), kRecord);

  typed->ip = IPAddress("10.0.0.1");
  EXPECT_EQ(typed->encodeData(), (Data{10, 0, 0, 1}));
}

TEST(DNSAResourceRecordTest, HoldsSixteenBytesToo) {
  Data record = kRecord;
  record[14] = 16;
  record.insert(record.end(), 12, 0);
  const auto typed = DNSAResourceRecord::fromResource(*decodedRecord(record));
  EXPECT_EQ(typed->ip->correctForm(), "5db8:d822::");
  EXPECT_EQ(typed->encode(), record);
}

TEST(DNSAResourceRecordTest, OtherLengthsThrow) {
  Data record = kRecord;
  record[14] = 3;
  const auto generic = decodedRecord(record);
  EXPECT_EQ(
      thrownBy([&] { DNSAResourceRecord::fromResource(*generic); }),
      "ipInvalidLength: The provided data length does not correspond to neighter a IPv4 nor a "
      "IPv6 address");
}

}  // namespace
}  // namespace quillet
