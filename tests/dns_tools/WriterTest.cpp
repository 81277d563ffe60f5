#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dns_tools/Writer.h"
#include "tests/support/Wire.h"

namespace {

using DnsToolsSocket::EncodeError;
using DnsToolsSocket::Labels;
using DnsToolsSocket::Writer;
using platform::Data;
using quillet::test::hex;

/// What writing the names one after another appends to a buffer of `before` octets.
Data written(const std::vector<std::string>& names, Labels& labels, std::size_t before) {
  Data bytes(before);
  Writer writer(bytes, labels);
  for (const auto& name : names) {
    writer.writeName(name);
  }
  EXPECT_TRUE(writer.finish());
  return {bytes.begin() + static_cast<std::ptrdiff_t>(before), bytes.end()};
}

/// The same, whoever holds the names.
Data written(const std::vector<std::string>& names, std::size_t before = 0) {
  auto borrowing = Labels::borrowing();
  Labels labels;
  auto bytes = written(names, labels, before);
  EXPECT_EQ(written(names, borrowing, before), bytes);
  return bytes;
}

TEST(Writer, WritesNames) {
  const struct {
    const char* what;
    std::vector<std::string> names;
    const char* bytes;
  } kCases[] = {
      {"the root", {"."}, "00"},
      {"the root is a name as any other", {".", ".", ""}, "00 C000 00"},
      {"without the last dot", {"a.b"}, "01 61 01 62 00"},
      {"UTF-8", {"\u00E4.\u20AC."}, "02 C3A4 03 E282AC 00"},
      {"the whole name again", {"a.b.c.", "a.b.c."}, "01 61 01 62 01 63 00 C000"},
      {"the rest of a name as a name", {"a.b.c.", "b.c"}, "01 61 01 62 01 63 00 C002"},
      {"but not with a dot more", {"a.b.c.", "b.c."}, "01 61 01 62 01 63 00 01 62 C004"},
      {"nor with a dot less", {"a.b.", "a.b"}, "01 61 01 62 00 01 61 C002"},
      {"a rest that two names share", {"a.b.c.", "x.b.c."}, "01 61 01 62 01 63 00 01 78 C002"},
      {"a rest of a rest",
       {"a.b.c.", "x.c.", "y.x.c."},
       "01 61 01 62 01 63 00 01 78 C004 01 79 01 78 C004"},
      {"letters as they are", {"A.", "a."}, "01 41 00 01 61 00"},
      {"empty pieces dropped", {".a..b."}, "01 61 01 62 00"},
      {"their rest found again",
       {"a..a.name.that.is.long", "z..", "x.a.name.that.is.long"},
       "01 61 01 61 04 6E616D65 04 74686174 02 6973 04 6C6F6E67 00 01 7A 00 01 78 C002"},
      {"not the same text as without them",
       {"a..b", "a.b", "x.a.b."},
       "01 61 01 62 00 01 61 C002 01 78 C005"},
  };
  for (const auto& [what, names, bytes] : kCases) {
    EXPECT_EQ(written(names), hex(bytes)) << what << ": " << names.front();
  }
}

TEST(Writer, FindsEachOfManyNamesAgain) {
  std::vector<std::string> names;
  Data expected;
  constexpr std::size_t kNames = 300;
  const auto append = [&expected](const Data& bytes) {
    expected.insert(expected.end(), bytes.begin(), bytes.end());
  };
  std::vector<std::size_t> offsets;
  for (std::size_t i = 0; i < kNames; ++i) {
    const auto label = std::to_string(1000 + i);
    names.push_back(label + ".b.a.");
    offsets.push_back(expected.size());
    expected.push_back(4);
    append({label.begin(), label.end()});
    append(i == 0 ? hex("01 62 01 61 00") : hex("C005"));
  }
  auto twice = names;
  twice.insert(twice.end(), names.begin(), names.end());
  for (const auto offset : offsets) {
    append({static_cast<std::uint8_t>(0xC0 | offset >> 8), static_cast<std::uint8_t>(offset)});
  }
  EXPECT_EQ(written(twice), expected);
}

TEST(Writer, PointsNoFurtherThanAPointerReaches) {
  // The whole name begins at the last offset that can be pointed to, its rest behind that.
  EXPECT_EQ(written({"a.b.", "a.b.", "c.b."}, 0x3FFF), hex("01 61 01 62 00 FFFF 01 63 01 62 00"));
  EXPECT_EQ(written({"a.", "a."}, 0x4000), hex("01 61 00 01 61 00"));
}

TEST(Writer, RefusesWhatHasNoLength) {
  for (const bool fits : {true, false}) {
    Data name;
    Labels labels;
    Writer nameWriter(name, labels);
    nameWriter.writeName(std::string(fits ? 255 : 256, 'a'));
    const auto named = nameWriter.finish();
    EXPECT_EQ(named.has_value(), fits);
    EXPECT_TRUE(named || named.error() == EncodeError::labelTooLong);

    Data data;
    Writer writer(data, labels);
    const auto begin = writer.beginData();
    writer.writeBytes(Data(fits ? 65535 : 65536));
    writer.endData(begin);
    const auto outcome = writer.finish();
    EXPECT_EQ(outcome.has_value(), fits);
    EXPECT_TRUE(outcome ? data[0] == 0xFF && data[1] == 0xFF
                        : outcome.error() == EncodeError::dataTooLong);
  }
}

}  // namespace
