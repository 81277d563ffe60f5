#include "dns_tools/Reader.h"
#include "tests/support/Test.h"

namespace DnsToolsSocket::test {

using namespace quillet::test;

/// The name that begins there and where it ends, "a. 3", or the error.
std::string readNameAt(const Data& bytes, std::size_t start) {
  Reader reader(bytes);
  reader.skip(start);
  const auto text = reader.readName();
  if (reader.error()) {
    EXPECT_TRUE(text.empty() && reader.remaining() == 0);
    return description(*reader.error());
  }
  return text + " " + std::to_string(reader.position());
}

TEST(Reader, ReadsNames) {
  const std::tuple<const char*, std::string, std::size_t, std::string> rows[] = {
      {"root", "00", 0, ". 1"},
      {"three labels", "01 61 02 62 63 01 64 00 FF", 0, "a.bc.d. 8"},
      {"a label, then a pointer", "01 61 00 01 62 C0 00 FF", 3, "b.a. 7"},
      {"a pointer to a pointer", "01 61 00 C0 00 C0 03 FF", 5, "a. 7"},
      {"a pointer to the root", "00 01 61 C0 00", 1, "a. 5"},
      {"a pointer with its other two top bits", "01 61 00 FF FF C0 00", 5, "a. 7"},
      {"a zero octet", "01 00 00", 0, std::string("\0. 3", 4)},
      {"empty pieces stay", "03 2E 2E 61 01 2E 00", 0, "..a... 7"},
      {"but not through a pointer", "03 2E 2E 61 01 2E 00 01 62 C0 00", 7, "b.a. 11"},
      {"where nothing may be left", "01 2E 00 C0 00", 3, ". 5"},
      {"lengths of 0xBF and 0x40",
       "BF" + std::string(382, '6') + "40" + std::string(128, '7') + "00", 0,
       std::string(191, 'f') + "." + std::string(64, 'w') + ". 258"},
      {"nothing there", "", 0, "invalidLabelSize"},
      {"a label cut short", "02 61", 0, "invalidLabelSize"},
      {"a pointer cut short after a label", "01 61 C0", 0, "invalidIntegerSize"},
      {"a pointer to itself", "00 C0 01", 1, "invalidLabelOffset"},
      {"a pointer into the name itself", "01 61 01 62 C0 02", 0, "invalidLabelOffset"},
      {"a pointer forwards", "C0 02 00", 0, "invalidLabelOffset"},
      {"a name that runs into the pointer to it", "01 61 C0 00", 2, "invalidLabelOffset"},
      {"half a sequence, the rest after a dot", "01 C3 01 A4 00", 0, "unicodeDecodingError"},
      {"the first of two failures counts", "01 80 02 61", 0, "unicodeDecodingError"}};
  for (const auto& [what, bytes, start, expected] : rows) {
    EXPECT_EQ(readNameAt(hex(bytes), start), expected) << what;
  }
}

TEST(Reader, KeepsTheFirstFailureAndStaysAtTheEnd) {
  const auto bytes = hex("00 01 02 03 04");
  Reader reader(bytes);
  EXPECT_EQ(reader.readUInt16(), 1);
  EXPECT_EQ(reader.readUInt32(), 0U);
  EXPECT_EQ(reader.position(), 5U);
  EXPECT_EQ(reader.readName(), "");
  EXPECT_TRUE(reader.readBytes(1, DecodeError::invalidDataSize).empty());
  EXPECT_EQ(reader.error(), DecodeError::invalidIntegerSize);
}

}  // namespace DnsToolsSocket::test
