#include "control_client/DisplayText.h"
#include "control_client/TopLayout.h"
#include "tests/control_client/Locale.h"
#include "tests/support/ExpectedText.h"
#include "tests/support/Test.h"

namespace quilletctl::test {

using namespace quillet::test;

class TopLayoutTest : public testing::Test {
 protected:
  TopLayoutTest() {
    platform::Clock::setShared(&clock_);
    model_.emplace();
    for (int second = 0; second < 4; ++second) {
      clock_.advanceSeconds(1);
      for (int i = 0; i < 1 << second; ++i) {
        add("www.example.com", 5);
      }
    }
    add("名前.example", 3);
    model_->addLost(2);
    clock_.advanceSeconds(1);
  }
  ~TopLayoutTest() override { platform::Clock::setShared(nullptr); }

  void add(const char* name, unsigned rule) {
    model_->add(QueryEvent::from(
        {{"name", name}, {"app", "firefox"}, {"rule", rule}, {"rcode", "NOERROR"}, {"ms", 2}}));
  }
  [[nodiscard]] Texts texts(std::size_t width, std::size_t height) const {
    Texts texts;
    for (const auto& line : topLayout(*model_, "proxy", {width, height})) {
      texts.push_back(line.plain());
    }
    return texts;
  }

  const Locale locale_;
  platform::ManualClock clock_;
  std::optional<TopModel> model_;
};

TEST_F(TopLayoutTest, FillsATerminalOfUsualSize) {
  std::string shown;
  for (const auto& line : texts(80, 24)) {
    shown.append(line, 0, line.find_last_not_of(' ') + 1).append("\n");
  }
  EXPECT_EQ(shown, expectedText("control_client/screens/top.txt"));
}

TEST_F(TopLayoutTest, StaysWithinEverySize) {
  for (const auto* name : {"C", "C.UTF-8"}) {
    const Locale locale(name);
    for (std::size_t width = 0; width <= 90; ++width) {
      for (const std::size_t height : {0U, 1U, 2U, 9U, 19U, 20U, 60U}) {
        const auto lines = texts(width, height);
        EXPECT_LE(lines.size(), height);
        for (const auto& line : lines) {
          EXPECT_LE(columnsOf(line), width) << line;
        }
      }
    }
  }
}

}  // namespace quilletctl::test
