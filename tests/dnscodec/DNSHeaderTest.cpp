#include <gtest/gtest.h>

#include "dnscodec/DNSHeader.h"
#include "tests/support/Wire.h"

namespace quillet {
namespace {

TEST(DNSHeaderTest, ReadsAndWritesEachField) {
  const std::pair<const char*, DNSHeader> rows[] = {
      {"abcd 0000", {.id = 0xABCD}},
      {"0000 8000", {.isQuery = false}},
      {"0000 7800", {.opCode = 15}},
      {"0000 0400", {.authoritativeAnswer = true}},
      {"0000 0200", {.truncated = true}},
      {"0000 0100", {.recursionDesired = true}},
      {"0000 0080", {.recursionAvailable = true}},
      {"0000 0020", {.authenticatedData = true}},
      {"0000 0010", {.checkingDisabled = true}},
      {"0000 000f", {.responseCode = 15}},
  };
  for (auto [bytes, header] : rows) {
    header.questionCount = 0x0102;
    header.answerRecordCount = 0x0304;
    header.authorityRecordCount = 0x0506;
    header.additionalRecordCount = 0x0708;
    const auto wire = test::hex(std::string(bytes) + "0102 0304 0506 0708");
    std::uint32_t offset = 0;
    DNSHeaderDecoder decoder;
    decoder.decodeHeaderInBuffer(wire, offset);
    EXPECT_EQ(decoder.header, header) << bytes;
    EXPECT_EQ(DNSHeaderEncoder::encode(header), wire) << bytes;
  }
  EXPECT_EQ(DNSHeaderEncoder::encode({.opCode = 0xFFF5, .responseCode = 0xF3}),
            test::hex("0000 2803 0000000000000000"));
}

}  // namespace
}  // namespace quillet
