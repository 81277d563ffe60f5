#include "platform/xpc/LineBuffer.h"
#include "tests/platform/Test.h"

namespace platform::test {

TEST(LineBufferTest, PutsLinesTogetherHoweverTheyComeButForThoseTooLong) {
  const std::string longest(LineBuffer::kMaxLine, 'x');
  const auto bytes =
      "\na\r\n" + longest + "\nx" + longest + "\nb\n" + longest + longest + "\n\nrest";
  const std::vector<std::string> expected{"", "a\r", longest, "!", "b", "!", ""};
  for (const std::size_t step : {1UL, 16'384UL, 65'536UL, bytes.size()}) {
    LineBuffer buffer;
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < bytes.size(); at += step) {
      buffer.append(std::string_view(bytes).substr(at, step));
      while (const auto line = buffer.next()) {
        lines.push_back(line->isTooLong ? "!" : line->text);
      }
    }
    EXPECT_TRUE(lines == expected) << step;
  }
}

}  // namespace platform::test
