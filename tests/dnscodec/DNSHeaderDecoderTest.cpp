// Headers in both directions: what is read of the octets is what they are written of.

#include <gtest/gtest.h>

#include "dnscodec/DNSHeader.h"
#include "tests/support/Wire.h"

namespace quillet {

namespace {

using test::hex;

std::optional<DNSHeader> decoded(platform::DataView bytes) {
  std::uint32_t offset = 0;
  DNSHeaderDecoder decoder;
  decoder.decodeHeaderInBuffer(bytes, offset);
  return decoder.header;
}

TEST(DNSHeaderDecoder, ReadsAndWritesEachField) {
  struct Row {
    const char* what;
    const char* bytes;
    DNSHeader header;
  };
  const Row rows[] = {
      {"id", "abcd 0000 0000000000000000", {.id = 0xABCD}},
      {"QR", "0000 8000 0000000000000000", {.isQuery = false}},
      {"opcode 15", "0000 7800 0000000000000000", {.opCode = 15}},
      {"AA", "0000 0400 0000000000000000", {.authoritativeAnswer = true}},
      {"TC", "0000 0200 0000000000000000", {.truncated = true}},
      {"RD", "0000 0100 0000000000000000", {.recursionDesired = true}},
      {"RA", "0000 0080 0000000000000000", {.recursionAvailable = true}},
      {"AD", "0000 0020 0000000000000000", {.authenticatedData = true}},
      {"CD", "0000 0010 0000000000000000", {.checkingDisabled = true}},
      {"response code 15", "0000 000f 0000000000000000", {.responseCode = 15}},
      {"counts",
       "0000 0000 0102 0304 0506 0708",
       {.questionCount = 0x0102,
        .answerRecordCount = 0x0304,
        .authorityRecordCount = 0x0506,
        .additionalRecordCount = 0x0708}},
  };
  for (const auto& [what, bytes, header] : rows) {
    EXPECT_EQ(decoded(hex(bytes)), header) << what;
    EXPECT_EQ(DNSHeaderEncoder::encode(header), hex(bytes)) << what;
  }
}

TEST(DNSHeaderDecoder, WritesFourBitsOfACode) {
  EXPECT_EQ(DNSHeaderEncoder::encode({.opCode = 0xFFF5, .responseCode = 0xF3}),
            hex("0000 2803 0000000000000000"));
}

}  // namespace

}  // namespace quillet
