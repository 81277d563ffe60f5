#include "platform/dispatch/DispatchQueue.h"
#include "platform/log/NSLog.h"
#include "platform/log/StreamLogSink.h"
#include "tests/platform/Pipe.h"
#include "tests/platform/Test.h"

namespace platform::test {

void later(std::function<void()> work) { DispatchQueue::global().async(std::move(work)); }

TEST(MainLoopTest, RunsWorkLaterInItsOrderAndStopsAfterTheHandlerThatIsRunning) {
  std::vector<int> noted;
  later([&] {
    later([&] { noted.push_back(3); });
    MainLoop::shared().stop();
    noted.push_back(1);
  });
  later([&] { noted.push_back(2); });
  EXPECT_THAT(noted, ElementsAre());
  MainLoop::shared().run();
  EXPECT_THAT(noted, ElementsAre(1));
  later([&] { MainLoop::shared().stop(); });
  MainLoop::shared().run();
  EXPECT_THAT(noted, ElementsAre(1, 2, 3));
}

TEST(MainLoopTest, WritesTheRecordsOfOneTurnTogetherBeforeItWaits) {
  const Pipe pipe;
  LogSink::setShared(std::make_unique<StreamLogSink>(pipe.writer.get(), "test"));
  later([&] {
    NSLog("a");
    later([&] {
      NSLog("c");
      EXPECT_EQ(pipe.read(), "");
      DispatchQueue::global().asyncAfter(0.001, [&] {
        EXPECT_THAT(pipe.read(), testing::MatchesRegex(".* a\n.* b\n.* c\n"));
        MainLoop::shared().stop();
      });
    });
  });
  later([] { NSLog("b"); });
  MainLoop::shared().run();
  LogSink::setShared(nullptr);
}

}  // namespace platform::test
