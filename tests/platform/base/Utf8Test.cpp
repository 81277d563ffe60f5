#include <gtest/gtest.h>

#include <string>

#include "platform/base/Utf8.h"

namespace platform {
namespace {

// The bounds of each row of the table of RFC 3629 section 4.
TEST(Utf8Test, sequences) {
  const std::pair<std::string, std::size_t> rows[] = {
      {std::string(1, '\0'), 1},
      {"\x7F", 1},
      {"\x80", 0},
      {"\xC1\xBF", 0},
      {"\xC2\x80", 2},
      {"\xDF\xBF", 2},
      {"\xC2\x7F", 0},
      {"\xC2\xC0", 0},
      {"\xE0\x9F\xBF", 0},
      {"\xE0\xA0\x80", 3},
      {"\xED\x9F\xBF", 3},
      {"\xED\xA0\x80", 0},
      {"\xEE\x80\x80", 3},
      {"\xEF\xBF\xBF", 3},
      {"\xF0\x8F\xBF\xBF", 0},
      {"\xF0\x90\x80\x80", 4},
      {"\xF4\x8F\xBF\xBF", 4},
      {"\xF4\x90\x80\x80", 0},
      {"\xF5\x80\x80\x80", 0},
  };
  for (const auto& [text, length] : rows) {
    EXPECT_EQ(utf8SequenceLength(text + "x"), length) << testing::PrintToString(text);
    EXPECT_EQ(isValidUtf8("a" + text + "b"), length == text.size());
    for (std::size_t cut = 0; cut < length; ++cut) {
      EXPECT_EQ(utf8SequenceLength(text.substr(0, cut)), 0U);
    }
  }
}

// As the Unicode Standard has it, section 3.9: one for each sequence as far as it is well-formed.
TEST(Utf8Test, whatIsIllFormedIsReplaced) {
  const std::string mark = "\xEF\xBF\xBD";
  EXPECT_EQ(repairedUtf8("plain \xC3\xA9"), "plain \xC3\xA9");
  EXPECT_EQ(repairedUtf8("a\xFF\xE2\x82z"), "a" + mark + mark + "z");
  EXPECT_EQ(repairedUtf8("\xF0\x80\x80\xF1\x80\x80\xC2"), mark + mark + mark + mark + mark);
}

}  // namespace
}  // namespace platform
