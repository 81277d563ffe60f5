#include <gtest/gtest.h>

#include "dnscodec/DNSQuestionDecoder.h"
#include "dnscodec/DNSQuestionEncoder.h"
#include "tests/support/Wire.h"

namespace quillet {

namespace {

using test::hex;

TEST(DNSQuestionDecoder, ReadsNameTypeAndClass) {
  const auto bytes = hex("ff 01 61 00 001c 0001 ff");
  std::uint32_t offset = 1;
  DNSQuestionDecoder decoder;
  decoder.decodeQuestionInBuffer(bytes, offset);
  ASSERT_TRUE(decoder.question);
  EXPECT_EQ(*decoder.question, (DNSQuestion{"a", 28, 1}));
  EXPECT_EQ(offset, 8U);
  EXPECT_EQ(DNSQuestionEncoder::encode(*decoder.question), hex("01 61 00 001c 0001"));
}

}  // namespace

}  // namespace quillet
