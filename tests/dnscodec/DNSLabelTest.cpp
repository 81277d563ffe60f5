#include "dnscodec/DNSLabel.h"
#include "tests/support/Test.h"

namespace quillet::test {

/// The name at `offset` and where it ends, "a.b 7"; nothing where there is none.
std::string nameAt(const Data& buffer, std::uint32_t offset = 0) {
  const auto start = offset;
  DNSLabelDecoder decoder;
  decoder.decodeLabelInBuffer(buffer, offset);
  EXPECT_TRUE(decoder.name || offset == start);
  return decoder.name ? *decoder.name + " " + std::to_string(offset) : "";
}

TEST(DNSLabelTest, ReadsLabelsAndPointers) {
  const std::tuple<const char*, const char*, std::uint32_t, std::string> rows[] = {
      {"the root", "00", 0, ". 1"},
      {"in the middle", "ffff 0161 0162 00 ff", 2, "a.b 7"},
      {"any ASCII octet", "04 00 7f 2e 20 00", 0, std::string("\0\x7f.  6", 6)},
      {"labels, then a pointer", "0161 00 0162 c000", 3, "b.a 7"},
      {"a pointer to a pointer", "0161 00 0162 c000 0163 c003", 7, "c.b.a 11"},
      {"a pointer forward", "c003 ff 0161 00", 0, "a 2"},
      {"a pointer into the name's own end", "0161 c004 00", 0, "a.. 4"},
      {"a pointer to the root", "00 c000", 1, ". 3"},
      // A pointer to what is no name ends the name.
      {"past the end", "c0ff", 0, ". 2"},
      {"a label before it", "0161 c0ff", 0, "a 4"},
      {"a target cut after a label", "0161 c004 0162 05", 0, "a 4"},
      {"a target cut in its pointer", "0161 c004 c0", 0, "a 4"},
      {"a target that is not ASCII", "0161 c004 0180 00", 0, "a 4"},
      {"a target with a label and such a pointer", "0161 c004 0162 c0ff", 0, "a.b 4"},
      {"a target that is such a pointer", "0161 c004 c0ff", 0, "a.. 4"},
      {"at the end", "00", 1, ""},
      {"far past the end", "00", 0xFFFFFFFF, ""},
      {"no end", "0161", 0, ""},
      {"a label of 191 octets cut", "bf 61 00", 0, ""},
      {"a pointer cut", "0161 c0", 0, ""},
      {"not ASCII", "0180 00", 0, ""},
      {"a pointer to itself", "c000", 0, ""}};
  for (const auto& [what, bytes, offset, name] : rows) {
    EXPECT_EQ(nameAt(hex(bytes), offset), name) << what;
  }
}

TEST(DNSLabelTest, PointersHaveFourteenBits) {
  for (const auto& [pointer, target] : {std::pair("c105", 261U), std::pair("ffff", 16383U)}) {
    auto buffer = hex(pointer);
    buffer.resize(target, 0xFF);
    buffer.insert(buffer.end(), {1, 'a', 0});
    EXPECT_EQ(nameAt(buffer), "a 2");
  }
}

TEST(DNSLabelTest, FollowsSoManyPointersAndNoMore) {
  Data chain;  // each points to the next, and the last to a name
  for (int next = 2; next <= 2 * (DNSLabelDecoder::kMaxPointers + 1); next += 2) {
    chain.push_back(static_cast<std::uint8_t>(0xC0 | next >> 8));
    chain.push_back(static_cast<std::uint8_t>(next));
  }
  chain.insert(chain.end(), {1, 'a', 0});
  EXPECT_EQ(nameAt(chain), "");
  EXPECT_EQ(nameAt(chain, 2), "a 4");
}

TEST(DNSLabelTest, WritesEachPieceAsALabel) {
  expectEach<std::string, Data>(DNSLabelEncoder::encode,
                                {{".", hex("00")},
                                 {"", hex("00 00")},
                                 {"a.", hex("016100 00")},
                                 {"a..b", hex("0161 00 0162 00")},
                                 {"caf\xC3\xA9", hex("05 636166c3a9 00")}});
  // A label that would read as a pointer is cut.
  for (const std::size_t length : {190U, 191U, 192U}) {
    const std::string label(length, 'x');
    const auto kept = label.substr(0, 191);
    const auto written = static_cast<char>(kept.size()) + kept;
    EXPECT_EQ(textOf(DNSLabelEncoder::encode(label + ".b")), written + std::string("\1b\0", 3));
  }
}

}  // namespace quillet::test
