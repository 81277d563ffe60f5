// Names, read and written.

#include <gtest/gtest.h>

#include "dnscodec/DNSLabel.h"
#include "tests/support/Wire.h"

namespace quillet {

namespace {

using platform::Data;
using test::hex;
using Name = std::optional<std::string>;

/// The name at `offset`, which is then behind it; where there is none, `offset` stays.
Name nameAt(const Data& buffer, std::uint32_t& offset, DecodeBudget budget = {}) {
  DNSLabelDecoder decoder;
  decoder.decodeLabelInBuffer(buffer, offset, budget);
  return decoder.name;
}

TEST(DNSLabelDecoder, ReadsLabelsAndPointers) {
  struct Row {
    const char* what;
    const char* bytes;
    std::string name;
    std::uint32_t offset;
    std::uint32_t behind;
  };
  const Row rows[] = {
      {"the root", "00", ".", 0, 1},
      {"in the middle", "ffff 0161 0162 00 ff", "a.b", 2, 7},
      {"any ASCII octet", "04 00 7f 2e 20 00", std::string("\0\x7f. ", 4), 0, 6},
      {"a pointer", "0161 00 c000", "a", 3, 5},
      {"labels, then a pointer", "0161 00 0162 c000", "b.a", 3, 7},
      {"a pointer to a pointer", "0161 00 0162 c000 0163 c003", "c.b.a", 7, 11},
      {"a pointer forward", "c003 ff 0161 00", "a", 0, 2},
      {"a pointer into the name's own end", "0161 c004 00", "a..", 0, 4},
      {"a pointer to the root", "00 c000", ".", 1, 3},
      {"a label and a pointer to the root", "00 0161 c000", "a..", 1, 5},
      // A pointer to what is no name ends the name.
      {"behind the end", "c0ff", ".", 0, 2},
      {"at the end", "c002", ".", 0, 2},
      {"a label before it", "0161 c0ff", "a", 0, 4},
      {"a target cut after a label", "0161 c004 0162 05", "a", 0, 4},
      {"a target cut in its pointer", "0161 c004 c0", "a", 0, 4},
      {"a target that is not ASCII", "0161 c004 0180 00", "a", 0, 4},
      {"a target with a label and such a pointer", "0161 c004 0162 c0ff", "a.b", 0, 4},
      {"a target that is such a pointer", "0161 c004 c0ff", "a..", 0, 4},
  };
  for (const auto& [what, bytes, name, offset, behind] : rows) {
    auto moved = offset;
    EXPECT_EQ(nameAt(hex(bytes), moved), name) << what;
    EXPECT_EQ(moved, behind) << what;
  }
}

TEST(DNSLabelDecoder, Fails) {
  struct Row {
    const char* what;
    const char* bytes;
    std::uint32_t offset;
  };
  const Row rows[] = {
      {"behind the end", "00", 1},
      {"far behind the end", "00", 0xFFFFFFFF},
      {"no end", "0161", 0},
      {"a label cut", "026100", 0},
      {"a label of 191 octets cut", "bf 61 00", 0},
      {"a pointer cut", "0161 c0", 0},
      {"not ASCII", "0180 00", 0},
      {"a pointer to itself", "c000", 0},
      {"two pointers in a circle", "c002 c000", 0},
  };
  for (const auto& [what, bytes, offset] : rows) {
    auto moved = offset;
    EXPECT_FALSE(nameAt(hex(bytes), moved)) << what;
    EXPECT_EQ(moved, offset) << what;
  }
}

TEST(DNSLabelDecoder, PointersHaveFourteenBits) {
  for (const auto& [pointer, target] : {std::pair("c105", 261U), std::pair("ffff", 16383U)}) {
    auto buffer = hex(pointer);
    buffer.resize(target, 0xFF);
    buffer.insert(buffer.end(), {1, 'a', 0});
    std::uint32_t offset = 0;
    EXPECT_EQ(nameAt(buffer, offset), "a") << pointer;
  }
}

/// `pointers` pointers, each to the next, and behind them a name.
Data chain(int pointers) {
  Data buffer;
  for (int i = 1; i <= pointers; ++i) {
    buffer.push_back(static_cast<std::uint8_t>(0xC0 | (2 * i) >> 8));
    buffer.push_back(static_cast<std::uint8_t>(2 * i));
  }
  buffer.insert(buffer.end(), {1, 'a', 0});
  return buffer;
}

TEST(DNSLabelDecoder, FollowsSoManyPointersAndNoMore) {
  std::uint32_t offset = 0;
  EXPECT_FALSE(nameAt(chain(DNSLabelDecoder::kMaxPointers + 1), offset));
  EXPECT_EQ(nameAt(chain(DNSLabelDecoder::kMaxPointers), offset), "a");
  EXPECT_EQ(offset, 2U);
}

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
