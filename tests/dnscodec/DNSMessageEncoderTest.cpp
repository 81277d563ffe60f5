#include <gtest/gtest.h>

#include "dnscodec/DNSCNAMEResourceRecord.h"
#include "dnscodec/DNSMessageDecoder.h"
#include "dnscodec/DNSMessageEncoder.h"
#include "tests/dnscodec/Samples.h"

namespace quillet {

namespace {

using test::hex;

TEST(DNSMessageEncoder, WritesNamesInFullAndDataAsItIs) {
  DNSMessageDecoder decoder;
  decoder.decodeMessageInBuffer(test::sampleAnswer());
  ASSERT_TRUE(decoder.message);
  EXPECT_EQ(DNSMessageEncoder::encode(*decoder.message),
            hex("abcd 81a0 0001 0002 0001 0001"
                "03777777 076578616d706c65 03636f6d 00 0001 0001"
                "03777777 076578616d706c65 03636f6d 00 0005 0001 0000012c 0006 03776562c010"
                "03776562 076578616d706c65 03636f6d 00 0001 0001 0000003c 0004 c0000201"
                "076578616d706c65 03636f6d 00 0002 0001 00015180 0006 036e7331c010"
                "036e7331 076578616d706c65 03636f6d 00 0001 0001 00015180 0004 c0000235"));
}

TEST(DNSMessageEncoder, LetsEachRecordWriteItself) {
  auto cname = std::make_shared<DNSCNAMEResourceRecord>();
  cname->name = "a";
  cname->type = 5;
  cname->resourceClass = 1;
  cname->canonicalName = "a.name.longer.than.its.empty.data";
  DNSMessage message;
  message.header.answerRecordCount = 5;  // what the header says of the lists does not count
  message.authorityRecords = {cname};
  EXPECT_EQ(DNSMessageEncoder::encode(message),
            hex("0000 0000 0000 0000 0001 0000 01 61 00 0005 0001 00000000 0023"
                "01 61 04 6e616d65 06 6c6f6e676572 04 7468616e 03 697473 05 656d707479"
                "04 64617461 00"));
}

TEST(DNSMessageEncoder, WritesTheLowBitsOfACountTooLarge) {
  DNSMessage message;
  message.questions.assign(0x10001, std::make_shared<DNSQuestion>(DNSQuestion{".", 1, 1}));
  const auto bytes = DNSMessageEncoder::encode(message);
  EXPECT_EQ(bytes.size(), 12U + 5U * 0x10001);
  EXPECT_EQ(bytes[4], 0);
  EXPECT_EQ(bytes[5], 1);
}

}  // namespace

}  // namespace quillet
