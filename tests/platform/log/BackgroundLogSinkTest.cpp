#include <pthread.h>

#include <csignal>
#include <future>
#include <latch>

#include "platform/log/BackgroundLogSink.h"
#include "tests/platform/Test.h"

namespace platform::test {

using Records = std::vector<std::string>;

/// Is stuck in its first record until `start`; tells what it was given when it goes away.
struct SlowSink final : LogSink {
  SlowSink(std::latch& aStart, std::promise<Records> anEnd)
      : start(aStart), end(std::move(anEnd)) {}
  ~SlowSink() override { end.set_value(std::move(records)); }

  void write(std::string_view text) override {
    start.wait();
    records.emplace_back(text);
    sigset_t blocked{};
    ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    EXPECT_EQ(::sigismember(&blocked, SIGTERM), 1) << "the event loop would miss its signals";
  }

  std::latch& start;
  std::promise<Records> end;
  Records records;
};

TEST(BackgroundLogSinkTest, GivesUpWaitingForAReaderThatGetsWhatFitsInOrder) {
  std::latch start(1);
  std::promise<Records> end;
  auto written = end.get_future();
  auto sink =
      std::make_unique<BackgroundLogSink>(std::make_unique<SlowSink>(start, std::move(end)));
  const std::string large(BackgroundLogSink::kCapacity / 2, 'x');
  for (const auto& record : {std::string("first"), large, large, large, std::string("last")}) {
    sink->write(record);
  }
  sink.reset();
  start.count_down();
  EXPECT_TRUE(written.get() == (Records{"first", large, std::string(LogSink::kLossText), "last"}));
}

}  // namespace platform::test
