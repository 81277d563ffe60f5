#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/foundation/NSLog.h"
#include "tests/support/LogCapture.h"

namespace platform {
namespace {

using quillet::test::LogCapture;

TEST(NSLogTest, piecesOneAfterAnotherVerbatim) {
  const LogCapture log;
  NSLog("100% \n", 5, ", ", std::vector{"a"}, "%s");
  NSLog();
  EXPECT_EQ(log.records(), (std::vector<std::string>{"100% \n5, [\"a\"]%s", ""}));
}

struct Talkative {
  void describe(std::string& out) const {
    NSLog("inner");
    out.append("value");
  }
};

TEST(NSLogTest, aPieceMayItselfLog) {
  const LogCapture log;
  NSLog("outer ", Talkative(), " end");
  NSLog("next");
  EXPECT_EQ(log.records(), (std::vector<std::string>{"inner", "outer value end", "next"}));
}

TEST(NSLogTest, aRecordTellsOfWhatIsBeyondItsBound) {
  const LogCapture log;
  NSLog(std::string(262144, 'x'));
  NSLog("a", std::string(262144, 'y'));
  ASSERT_EQ(log.records().size(), 2U);
  EXPECT_EQ(log.records()[0], std::string(262144, 'x'));
  EXPECT_EQ(log.records()[1], "a" + std::string(262143, 'y') + "... (1 bytes more)");
}

}  // namespace
}  // namespace platform
