#include <gtest/gtest.h>

#include "dnscodec/DNSHeaderEncoder.h"
#include "tests/support/Wire.h"

namespace quillet {

namespace {

using test::hex;

TEST(DNSHeaderEncoder, WritesEachField) {
  struct Row {
    const char* what;
    DNSHeader header;
    const char* bytes;
  };
  const Row rows[] = {
      {"none", {}, "0000 0000 0000 0000 0000 0000"},
      {"id", {.id = 0xABCD}, "abcd 0000 0000 0000 0000 0000"},
      {"QR", {.isQuery = false}, "0000 8000 0000 0000 0000 0000"},
      {"opcode", {.opCode = 5}, "0000 2800 0000 0000 0000 0000"},
      {"opcode, low 4 bits", {.opCode = 0xFFF5}, "0000 2800 0000 0000 0000 0000"},
      {"AA", {.authoritativeAnswer = true}, "0000 0400 0000 0000 0000 0000"},
      {"TC", {.truncated = true}, "0000 0200 0000 0000 0000 0000"},
      {"RD", {.recursionDesired = true}, "0000 0100 0000 0000 0000 0000"},
      {"RA", {.recursionAvailable = true}, "0000 0080 0000 0000 0000 0000"},
      {"AD, CD",
       {.authenticatedData = true, .checkingDisabled = true},
       "0000 0030 0000 0000 0000 0000"},
      {"response code", {.responseCode = 3}, "0000 0003 0000 0000 0000 0000"},
      {"response code, low 4 bits", {.responseCode = 0xF3}, "0000 0003 0000 0000 0000 0000"},
      {"counts",
       {.questionCount = 0x0102,
        .answerRecordCount = 0x0304,
        .authorityRecordCount = 0x0506,
        .additionalRecordCount = 0x0708},
       "0000 0000 0102 0304 0506 0708"},
  };
  for (const auto& [what, header, bytes] : rows) {
    EXPECT_EQ(DNSHeaderEncoder::encode(header), hex(bytes)) << what;
  }
}

}  // namespace

}  // namespace quillet
