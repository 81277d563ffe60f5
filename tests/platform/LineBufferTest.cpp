#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/xpc/LineBuffer.h"

namespace platform {
namespace {

const std::string kLongest(LineBuffer::kMaxLine, 'x');

/// The lines that come of `bytes` given in pieces of `step`; `!` stands for one that is too long.
std::vector<std::string> linesOf(const std::string& bytes, std::size_t step) {
  LineBuffer buffer;
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    buffer.append(std::string_view(bytes).substr(at, step));
    while (const auto line = buffer.next()) {
      lines.push_back(line->isTooLong ? "!" : line->text);
    }
  }
  return lines;
}

TEST(LineBufferTest, PutsLinesTogetherHoweverTheyCome) {
  const std::vector<std::string> expected{"", "a", "bc\r", "", "def"};
  for (std::size_t step = 1; step <= 16; ++step) {
    EXPECT_EQ(linesOf("\na\nbc\r\n\ndef\nhalf", step), expected) << step;
  }
}

TEST(LineBufferTest, DropsLinesThatAreTooLongAndGoesOn) {
  const std::vector<std::string> expected{kLongest, "!", "a", "!", ""};
  const auto bytes = kLongest + "\nx" + kLongest + "\na\n" + std::string(1'000'000, 'y') + "\n\n";
  for (const std::size_t step : {1000UL, 16'384UL, 65'536UL, 2'000'000UL}) {
    EXPECT_TRUE(linesOf(bytes, step) == expected) << step;
  }
}

}  // namespace
}  // namespace platform
