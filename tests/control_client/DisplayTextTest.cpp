#include "control_client/DisplayText.h"
#include "tests/control_client/Locale.h"
#include "tests/support/Test.h"

namespace quilletctl::test {

using namespace quillet::test;

TEST(DisplayTextTest, ShowsNothingThatATerminalWouldObeyOrMisplace) {
  const Locale locale;
  const std::tuple<std::string, std::string, std::size_t> rows[] = {
      {"www.example.com", "www.example.com", 15},
      {"a\x1B[2Jb\x07\n\x7F", R"(a\x1B[2Jb\x07\x0A\x7F)", 21},
      {"\xC2\x9B", R"(\xC2\x9B)", 8},                 // CSI of one character
      {"\xFF\xE5\x90", R"(\xFF\xE5\x90)", 12},        // no UTF-8
      {"\xED\xA0\x80", R"(\xED\xA0\x80)", 12},        // a surrogate
      {"\xE5\x90\x8D.jp", "\xE5\x90\x8D.jp", 5},      // two columns
      {"e\xCC\x81", R"(e\xCC\x81)", 9},               // stands on the character before
      {"\xE2\x80\xAEgpj", R"(\xE2\x80\xAEgpj)", 15},  // turns the direction
      {"\xE2\x80\xA8", R"(\xE2\x80\xA8)", 12},        // separates lines
      {"\xC3\xA4\xF0\x9F\x98\x80", "\xC3\xA4\xF0\x9F\x98\x80", 3},  // one and two
  };
  for (const auto& [given, shown, columns] : rows) {
    EXPECT_EQ(printable(given), shown);
    EXPECT_EQ(columnsOf(shown), columns) << shown;
  }
  EXPECT_EQ(printableWord("a b"), R"(a\x20b)");
  EXPECT_EQ(printableLines("a\nb\r\n"), "a\nb\\x0D\n");
}

TEST(DisplayTextTest, ShowsAsciiOnlyWhereTheTerminalMayTakeNoMore) {
  const Locale locale("C");
  EXPECT_EQ(printable("\xC3\xA4"), R"(\xC3\xA4)");
  EXPECT_EQ(cut("abcd", 3), "ab~");
}

TEST(DisplayTextTest, CutsAndFillsAtTheColumn) {
  const Locale locale;
  // Cut, filled, and filled at the left.
  const std::tuple<const char*, std::size_t, Texts> rows[] = {{"abc", 4, {"abc", "abc ", " abc"}},
                                                              {"abc", 3, {"abc", "abc", "abc"}},
                                                              {"abc", 2, {"a…", "a…", "a…"}},
                                                              {"abc", 1, {"…", "…", "…"}},
                                                              {"abc", 0, {"", "", ""}},
                                                              {"", 2, {"", "  ", "  "}},
                                                              {"名前", 4, {"名前", "名前", "名前"}},
                                                              {"名前", 3, {"名…", "名…", "名…"}},
                                                              {"名前", 2, {"…", "… ", " …"}}};
  for (const auto& [given, width, shown] : rows) {
    EXPECT_EQ((Texts{cut(given, width), padded(given, width), rightAligned(given, width)}), shown);
  }
}

TEST(DisplayTextTest, WrapsAtBlanksAndInsideLongWords) {
  const Locale locale;
  EXPECT_THAT(wrapped("ab cd", 5), ElementsAre("ab cd"));
  EXPECT_THAT(wrapped("ab cd", 4), ElementsAre("ab", "cd"));
  EXPECT_THAT(wrapped("ab  cd", 2), ElementsAre("ab", "cd"));
  EXPECT_THAT(wrapped("abcde f", 2), ElementsAre("ab", "cd", "e", "f"));
  EXPECT_THAT(wrapped("名前", 3), ElementsAre("名", "前"));
  EXPECT_THAT(wrapped("名前", 0), ElementsAre("名", "前"));
  EXPECT_THAT(wrapped("", 3), ElementsAre(""));
}

}  // namespace quilletctl::test
