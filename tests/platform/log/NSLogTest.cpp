#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/log/NSLog.h"
#include "tests/support/LogCapture.h"

namespace platform {
namespace {

struct Talkative {
  void describe(std::string& out) const {
    NSLog("inner");
    out.append("value");
  }
};

TEST(NSLogTest, piecesOneAfterAnotherVerbatimAlsoWhenOneItselfLogs) {
  const quillet::test::LogCapture log;
  NSLog("100% \n", 5, ", ", std::vector{"a"}, "%s");
  NSLog("outer ", Talkative(), " end");
  NSLog();
  EXPECT_THAT(log.records(),
              testing::ElementsAre("100% \n5, [\"a\"]%s", "inner", "outer value end", ""));
}

TEST(NSLogTest, aRecordTellsThatItWasCutAndPrintsNoListBeyondThat) {
  const quillet::test::LogCapture log;
  NSLog(std::string(262144, 'x'));
  NSLog("a", std::string(262144, 'y'));
  EXPECT_TRUE(log.records().at(0) == std::string(262144, 'x'));
  EXPECT_TRUE(log.records().at(1) == "a" + std::string(262143, 'y') + "... (cut here)");
  std::vector<std::vector<Talkative>> lists(2, std::vector<Talkative>(60'000));
  NSLog(lists);
  std::string expected = "[[value";
  while (expected.size() < 262144) {
    expected.append(", value");
  }
  EXPECT_TRUE(log.records().back() == expected.substr(0, 262144) + "... (cut here)");
  EXPECT_EQ(log.records().size(), 2 + 37'450 + 1U) << "each value that is printed is a record";
}

}  // namespace
}  // namespace platform
