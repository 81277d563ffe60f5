#include "dns_tools/Writer.h"
#include "tests/support/Test.h"

namespace DnsToolsSocket::test {

using namespace quillet::test;

/// What writing the names one after another appends to a buffer of `before` octets, whoever holds
/// the names.
Data written(const std::vector<std::string>& names, std::size_t before = 0) {
  Labels dictionaries[] = {Labels::borrowing(), Labels()};
  Data results[2];
  for (std::size_t i = 0; i < 2; ++i) {
    Data bytes(before);
    Writer writer(bytes, dictionaries[i]);
    for (const auto& name : names) {
      writer.writeName(name);
    }
    EXPECT_TRUE(writer.finish());
    results[i].assign(bytes.begin() + static_cast<std::ptrdiff_t>(before), bytes.end());
  }
  EXPECT_EQ(results[0], results[1]);
  return results[0];
}

TEST(Writer, WritesNames) {
  expectEach<Texts, Data>(
      [](const auto& names) { return written(names); },
      {{{".", ".", ""}, hex("00 C000 00")},  // the root is a name as any other
       {{"a.b"}, hex("01 61 01 62 00")},
       {{"\u00E4.\u20AC."}, hex("02 C3A4 03 E282AC 00")},
       {{"a.b.c.", "a.b.c."}, hex("01 61 01 62 01 63 00 C000")},
       {{"a.b.c.", "b.c"}, hex("01 61 01 62 01 63 00 C002")},
       {{"a.b.c.", "b.c."}, hex("01 61 01 62 01 63 00 01 62 C004")},  // not with a dot more
       {{"a.b.", "a.b"}, hex("01 61 01 62 00 01 61 C002")},           // nor with a dot less
       {{"a.b.c.", "x.c.", "y.x.c."}, hex("01 61 01 62 01 63 00 01 78 C004 01 79 01 78 C004")},
       {{"A.", "a."}, hex("01 41 00 01 61 00")},
       {{".a.b."}, hex("01 61 01 62 00")},
       {{"x.a..", "a"}, hex("01 78 01 61 00 C002")},
       {{"a..a.name.that.is.long", "z..", "x.a.name.that.is.long"},
        hex("01 61 01 61 04 6E616D65 04 74686174 02 6973 04 6C6F6E67 00 01 7A 00 01 78 C002")},
       {{"a..b", "a.b", "x.a.b."}, hex("01 61 01 62 00 01 61 C002 01 78 C005")}});
}

TEST(Writer, FindsEachOfManyNamesAgain) {
  constexpr std::size_t kNames = 300;
  std::vector<std::string> names;
  std::string expected;
  std::string pointers;
  for (std::size_t i = 0; i < kNames; ++i) {
    names.push_back(std::to_string(1000 + i) + ".b.a.");
    const auto offset = expected.size();
    pointers.append({static_cast<char>(0xC0 | offset >> 8), static_cast<char>(offset)});
    expected.append("\4" + std::to_string(1000 + i)).append(i == 0 ? "\1b\1a" : "\xC0\5");
    expected.resize(expected.size() + (i == 0 ? 1 : 0));
  }
  auto twice = names;
  twice.insert(twice.end(), names.begin(), names.end());
  EXPECT_EQ(textOf(written(twice)), expected + pointers);
}

TEST(Writer, PointsNoFurtherThanAPointerReaches) {
  // The whole name begins at the last offset that can be pointed to, its rest after that.
  EXPECT_EQ(written({"a.b.", "a.b.", "c.b."}, 0x3FFF), hex("01 61 01 62 00 FFFF 01 63 01 62 00"));
  EXPECT_EQ(written({"a.", "a."}, 0x4000), hex("01 61 00 01 61 00"));
}

TEST(Writer, RefusesWhatHasNoLength) {
  for (const std::size_t excess : {0U, 1U}) {
    Data name;
    Labels labels;
    Writer nameWriter(name, labels);
    nameWriter.writeName(std::string(255 + excess, 'a'));
    const auto named = nameWriter.finish();
    EXPECT_TRUE(named ? excess == 0 : excess == 1 && named.error() == EncodeError::labelTooLong);

    Data data;
    Writer writer(data, labels);
    const auto begin = writer.beginData();
    writer.writeBytes(Data(65535 + excess));
    writer.endData(begin);
    const auto outcome = writer.finish();
    EXPECT_TRUE(outcome ? excess == 0 && data[0] == 0xFF && data[1] == 0xFF
                        : excess == 1 && outcome.error() == EncodeError::dataTooLong);
  }
}

}  // namespace DnsToolsSocket::test
