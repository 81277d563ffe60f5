#include <gtest/gtest.h>

#include "dnscodec/DNSHeaderDecoder.h"
#include "tests/support/Wire.h"

namespace quillet {

namespace {

using test::hex;

std::optional<DNSHeader> decoded(platform::DataView bytes, std::uint32_t offset = 0) {
  DNSHeaderDecoder decoder;
  decoder.decodeHeaderInBuffer(bytes, offset);
  return decoder.header;
}

TEST(DNSHeaderDecoder, ReadsIdAndCounts) {
  const auto bytes = hex("ffff 1234 0000 0102 0304 0506 0708");
  std::uint32_t offset = 2;
  DNSHeaderDecoder decoder;
  decoder.decodeHeaderInBuffer(bytes, offset);
  ASSERT_TRUE(decoder.header);
  EXPECT_EQ(offset, 14U);
  EXPECT_EQ(decoder.header->id, 0x1234);
  EXPECT_EQ(decoder.header->questionCount, 0x0102);
  EXPECT_EQ(decoder.header->answerRecordCount, 0x0304);
  EXPECT_EQ(decoder.header->authorityRecordCount, 0x0506);
  EXPECT_EQ(decoder.header->additionalRecordCount, 0x0708);
}

TEST(DNSHeaderDecoder, ReadsEachFlag) {
  struct Row {
    const char* what;
    const char* flags;
    DNSHeader expected;
  };
  const Row rows[] = {
      {"none", "0000", {}},
      {"QR", "8000", {.isQuery = false}},
      {"opcode 5", "2800", {.opCode = 5}},
      {"opcode 15", "7800", {.opCode = 15}},
      {"AA", "0400", {.authoritativeAnswer = true}},
      {"TC", "0200", {.truncated = true}},
      {"RD", "0100", {.recursionDesired = true}},
      {"RA", "0080", {.recursionAvailable = true}},
      {"Z has no place", "0040", {}},
      {"AD", "0020", {.authenticatedData = true}},
      {"CD", "0010", {.checkingDisabled = true}},
      {"AD and CD", "0030", {.authenticatedData = true, .checkingDisabled = true}},
      {"NXDOMAIN", "0003", {.responseCode = 3}},
      {"response code 15", "000f", {.responseCode = 15}},
  };
  for (const auto& [what, flags, expected] : rows) {
    const auto bytes = hex(std::string("0000") + flags + "0000000000000000");
    EXPECT_EQ(decoded(bytes), expected) << what;
  }
}

TEST(DNSHeaderDecoder, NeedsTwelveOctets) {
  const platform::Data bytes(12);
  const platform::DataView whole(bytes);
  EXPECT_TRUE(decoded(whole));
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_FALSE(decoded(whole.first(size))) << size;
  }
  EXPECT_FALSE(decoded(whole, 1));
  EXPECT_FALSE(decoded(whole, 13));
  EXPECT_FALSE(decoded(whole, 0xFFFFFFFF));
}

}  // namespace

}  // namespace quillet
