#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "control_client/DisplayText.h"
#include "control_client/TopLayout.h"
#include "tests/control_client/Locale.h"

namespace quilletctl::test {
namespace {

using testing::ElementsAreArray;
using Texts = std::vector<std::string>;

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

  void add(const char* name, int rule) {
    QueryEvent query;
    query.name = name;
    query.application = "firefox";
    query.rule = rule;
    query.rcode = "NOERROR";
    query.milliseconds = 2;
    model_->add(query);
  }
  [[nodiscard]] Texts texts(std::size_t width, std::size_t height) const {
    Texts texts;
    for (const auto& line : topLayout(*model_, "proxy", {width, height})) {
      texts.push_back(line.plain());
    }
    return texts;
  }

  platform::ManualClock clock_;
  std::optional<TopModel> model_;
};

TEST_F(TopLayoutTest, FillsATerminalOfUsualSize) {
  const Locale locale;
  const std::string blanks(56, ' ');
  const Texts wanted = {
      "proxy, watched for 5 s                                                   q quits",
      "",
      "queries a second: 11, at most 11 in the last 60 s",
      blanks + "   █",
      blanks + "  ▁█",
      blanks + "▂▄██",
      "faults  unanswered 0  SERVFAIL 0  REFUSED 0  lost 2",
      "",
      "rule                                     answer time",
      "1 local network         0.0 %            below 1 ms      0.0 %",
      "2 allowed application   0.0 %            1 to 5 ms     100.0 % █████████████████",
      "3 mapped domain         6.2 % ▋          5 to 20 ms      0.0 %",
      "4 policy domain         0.0 %            20 to 100 ms    0.0 %",
      "5 filtering service    93.8 % ████████▌  100 to 500 ms   0.0 %",
      "0 declined              0.0 %            500 ms up       0.0 %",
      "",
      "busiest applications                     busiest names",
      "       16 firefox                               15 www.example.com",
      "                                                 1 名前.example",
  };
  auto shown = texts(80, 24);
  for (auto& line : shown) {
    line.erase(line.find_last_not_of(' ') + 1);
  }
  EXPECT_THAT(shown, ElementsAreArray(wanted));
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

}  // namespace
}  // namespace quilletctl::test
