#include "platform/base/Utf8.h"
#include "tests/platform/Test.h"

namespace platform::test {

// The bounds of each row of the table of RFC 3629 section 4.
TEST(Utf8Test, KnowsWhichSequencesAreWellFormed) {
  const std::vector<std::string> rows[] = {
      {"\x80", "\xC1\xBF", "\xC2\x7F", "\xC2\xC0", "\xE0\x9F\xBF", "\xED\xA0\x80",
       "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"},
      {std::string(1, '\0'), "\x7F"},
      {"\xC2\x80", "\xDF\xBF"},
      {"\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBF"},
      {"\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}};
  for (std::size_t length = 0; length <= 4; ++length) {
    for (const auto& text : rows[length]) {
      EXPECT_EQ(utf8SequenceLength(text + "x"), length) << testing::PrintToString(text);
      EXPECT_EQ(isValidUtf8("a" + text + "b"), length > 0);
      for (std::size_t cut = 0; cut < length; ++cut) {
        EXPECT_EQ(utf8SequenceLength(text.substr(0, cut)), 0U);
      }
    }
  }
}

// As the Unicode Standard has it, section 3.9: one mark for each sequence as far as it is
// well-formed.
TEST(Utf8Test, ReplacesWhatIsIllFormed) {
  EXPECT_EQ(repairedUtf8("plain \xC3\xA9"), "plain \xC3\xA9");
  EXPECT_EQ(repairedUtf8("a\xFF\xE2\x82z"), "a\uFFFD\uFFFDz");
  EXPECT_EQ(repairedUtf8("\xF0\x80\x80\xF1\x80\x80\xC2"), "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD");
}

}  // namespace platform::test
