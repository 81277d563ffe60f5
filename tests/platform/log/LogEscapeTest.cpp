#include "platform/log/LogEscape.h"
#include "tests/platform/Test.h"

namespace platform::test {

TEST(LogEscapeTest, EscapesControlsAndWhatIsNoUtf8WhereverTheyStand) {
  const std::pair<std::string, std::string> rows[] = {
      {"\x7F", "\\x7F"},
      {"100% \\n ~\n\r\0\x1B[31m\x1F\x7F"s, "100% \\n ~\\n\\x0D\\x00\\x1B[31m\\x1F\\x7F"},
      {"\xC2\x80\xC2\x9F\xC2\xA0", "\\xC2\\x80\\xC2\\x9F\xC2\xA0"},  // C1, then what follows
      {"\xE2\x82\xAC\xF0\x9F\x98\x80", "\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {"\x80x\xC3", "\\x80x\\xC3"},     // no sequence, a cut one
      {"\xC0\x8A", "\\xC0\\x8A"},       // an overlong line feed
      {"\xE2\x82\n", "\\xE2\\x82\\n"},  // cut by a line feed
  };
  for (const auto& [text, expected] : rows) {
    // The scan for plain text looks at many bytes at once; no position must escape it.
    for (std::size_t before = 0; before < 35; ++before) {
      for (std::size_t behind = 0; behind < 35; ++behind) {
        const auto around = [&](const std::string& middle) {
          return std::string(before, 'x').append(middle).append(behind, 'x');
        };
        std::string out;
        appendEscaped(out, around(text));
        ASSERT_EQ(out, around(expected));
      }
    }
  }
}

}  // namespace platform::test
