#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/dispatch/MainLoop.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/StreamLogSink.h"
#include "tests/platform/Pipe.h"

namespace platform {
namespace {

using testing::ElementsAre;

class MainLoopTest : public testing::Test {
 protected:
  static void later(std::function<void()> work) { DispatchQueue::global().async(std::move(work)); }

  MainLoop& loop_ = MainLoop::shared();
};

TEST_F(MainLoopTest, RunsWorkLaterInItsOrderAndStopsAfterTheHandlerThatIsRunning) {
  std::vector<int> noted;
  later([&] {
    later([&] { noted.push_back(3); });
    loop_.stop();
    noted.push_back(1);
  });
  later([&] { noted.push_back(2); });
  EXPECT_THAT(noted, ElementsAre());
  loop_.run();
  EXPECT_THAT(noted, ElementsAre(1));
  later([&] { loop_.stop(); });
  loop_.run();
  EXPECT_THAT(noted, ElementsAre(1, 2, 3));
}

TEST_F(MainLoopTest, WritesTheRecordsOfOneTurnTogetherBeforeItWaits) {
  const test::Pipe pipe;
  LogSink::setShared(std::make_unique<StreamLogSink>(pipe.writer.get(), "test"));
  later([&] {
    NSLog("a");
    later([&] {
      NSLog("c");
      EXPECT_EQ(pipe.read(), "");
      DispatchQueue::global().asyncAfter(0.001, [&] {
        EXPECT_THAT(pipe.read(), testing::MatchesRegex(".* a\n.* b\n.* c\n"));
        loop_.stop();
      });
    });
  });
  later([] { NSLog("b"); });
  loop_.run();
  LogSink::setShared(nullptr);
}

}  // namespace
}  // namespace platform
