#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/dispatch/MainLoop.h"
#include "platform/foundation/LogSink.h"
#include "platform/foundation/NSLog.h"

namespace platform {
namespace {

using testing::ElementsAre;

class MainLoopTest : public testing::Test {
 protected:
  static void later(std::function<void()> work) { DispatchQueue::global().async(std::move(work)); }
  void noteLater(int number) {
    later([this, number] { noted_.push_back(number); });
  }

  MainLoop& loop_ = MainLoop::shared();
  std::vector<int> noted_;
};

TEST_F(MainLoopTest, RunsWorkLaterInItsOrderAndStopsAfterTheHandlerThatIsRunning) {
  later([this] {
    noteLater(3);
    loop_.stop();
    noted_.push_back(1);
  });
  noteLater(2);
  EXPECT_THAT(noted_, ElementsAre());
  loop_.run();
  EXPECT_THAT(noted_, ElementsAre(1));
  later([this] { loop_.stop(); });
  loop_.run();
  EXPECT_THAT(noted_, ElementsAre(1, 2, 3));
}

/// Keeps what is written and when it is handed on.
struct FlushSink : LogSink {
  explicit FlushSink(std::vector<std::string>& list) : events(list) {}
  void write(std::string_view text) override {
    events.push_back((LogBatch::isActive() ? "held " : "alone ") + std::string(text));
  }
  void flush() override {
    if (!events.empty() && events.back() != "flush") {
      events.emplace_back("flush");
    }
  }
  std::vector<std::string>& events;
};

TEST_F(MainLoopTest, WritesTheRecordsOfOneTurnTogetherBeforeItWaits) {
  std::vector<std::string> events;
  LogSink::setShared(std::make_unique<FlushSink>(events));
  later([this] {
    NSLog("a");
    later([this] {
      NSLog("c");
      DispatchQueue::global().asyncAfter(0.001, [this] {
        NSLog("d");
        loop_.stop();
      });
    });
  });
  later([] { NSLog("b"); });
  loop_.run();
  LogSink::setShared(nullptr);
  EXPECT_THAT(events, ElementsAre("held a", "held b", "held c", "flush", "held d", "flush"));
}

}  // namespace
}  // namespace platform
