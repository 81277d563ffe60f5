#include "platform/log/NSLog.h"
#include "tests/platform/Test.h"

namespace platform::test {

struct Talkative {
  void describe(std::string& out) const {
    NSLog("inner");
    out.append("value");
  }
};

TEST(NSLogTest, WritesPiecesOneAfterAnotherVerbatimAlsoWhenOneItselfLogs) {
  const LogCapture log;
  NSLog("100% \n", 5, ", ", std::vector{"a"}, "%s");
  NSLog("outer ", Talkative(), " end");
  NSLog();
  EXPECT_THAT(log.records(), ElementsAre("100% \n5, [\"a\"]%s", "inner", "outer value end", ""));
}

TEST(NSLogTest, CutsARecord) {
  const LogCapture log;
  const std::string most(262144, 'x');
  NSLog(most);
  NSLog("a", most);
  EXPECT_TRUE(log.records().at(0) == most);
  EXPECT_TRUE(log.records().at(1) == "a" + most.substr(1) + "... (cut here)");
}

}  // namespace platform::test
