#include <gtest/gtest.h>

#include "dnscodec/DNSLabelEncoder.h"
#include "tests/support/Wire.h"

namespace quillet {

namespace {

using test::hex;

TEST(DNSLabelEncoder, WritesEachPieceAsALabel) {
  struct Row {
    const char* name;
    const char* bytes;
  };
  const Row rows[] = {
      {".", "00"},
      {"0", "01 30 00"},
      {"a.b", "01 61 01 62 00"},
      {"", "00 00"},
      {"a.", "01 61 00 00"},
      {"a..b", "01 61 00 01 62 00"},
      {"caf\xC3\xA9", "05 636166c3a9 00"},
  };
  for (const auto& [name, bytes] : rows) {
    EXPECT_EQ(DNSLabelEncoder::encode(name), hex(bytes)) << name;
  }
}

TEST(DNSLabelEncoder, CutsALabelThatWouldReadAsAPointer) {
  for (const std::size_t length : {63U, 64U, 191U, 192U, 300U}) {
    const auto bytes = DNSLabelEncoder::encode(std::string(length, 'x') + ".b");
    const std::size_t written = std::min<std::size_t>(length, 191);
    const auto expected = std::string(1, static_cast<char>(written)) + std::string(written, 'x') +
                          std::string("\1b\0", 3);
    EXPECT_EQ(platform::textOf(bytes), expected) << length;
  }
}

}  // namespace

}  // namespace quillet
