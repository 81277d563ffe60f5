#include <gtest/gtest.h>

#include <string>

#include "platform/foundation/LogEscape.h"

namespace platform {
namespace {

using namespace std::string_literals;

std::string escaped(std::string_view text) {
  std::string out;
  appendEscaped(out, text);
  return out;
}

TEST(LogEscapeTest, characters) {
  const struct {
    std::string text;
    std::string expected;
  } rows[] = {
      {"", ""},
      {"plain 100% \\n ~", "plain 100% \\n ~"},
      {"a\nb\n", "a\\nb\\n"},
      {"\r\t\0\x1B[31m"s, "\\x0D\\x09\\x00\\x1B[31m"},
      {"\x1F\x20\x7E\x7F", "\\x1F ~\\x7F"},
      {"\xC2\x80\xC2\x9F\xC2\xA0", "\\xC2\\x80\\xC2\\x9F\xC2\xA0"},  // C1, then what follows
      {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {"\x80x\xC3", "\\x80x\\xC3"},         // no sequence, a cut one
      {"\xC0\x8A", "\\xC0\\x8A"},           // an overlong line feed
      {"\xED\xA0\x80", "\\xED\\xA0\\x80"},  // a surrogate
      {"\xE2\x82\n", "\\xE2\\x82\\n"},      // cut by a line feed
  };
  for (const auto& row : rows) {
    EXPECT_EQ(escaped(row.text), row.expected);
  }
}

// The scan for plain text looks at many bytes at once; no position must escape it.
TEST(LogEscapeTest, oneSpecialByteAtEveryPositionOfEveryLength) {
  for (std::size_t length = 1; length <= 70; ++length) {
    for (std::size_t at = 0; at < length; ++at) {
      std::string text(length, 'x');
      text[at] = '\x7F';
      EXPECT_EQ(escaped(text), std::string(at, 'x') + "\\x7F" + std::string(length - at - 1, 'x'));
    }
  }
}

}  // namespace
}  // namespace platform
