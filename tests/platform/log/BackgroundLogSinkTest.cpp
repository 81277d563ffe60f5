#include <gtest/gtest.h>
#include <pthread.h>

#include <csignal>
#include <future>
#include <latch>
#include <string>
#include <vector>

#include "platform/log/BackgroundLogSink.h"

namespace platform {
namespace {

using Records = std::vector<std::string>;

/// Is stuck in its first record until it is let go; tells what it was given when it goes away.
class SlowSink final : public LogSink {
 public:
  SlowSink(std::shared_ptr<std::latch> start, std::promise<Records> end)
      : start_(std::move(start)), end_(std::move(end)) {}
  ~SlowSink() override { end_.set_value(std::move(records_)); }

  void write(std::string_view text) override {
    start_->wait();
    records_.emplace_back(text);
    sigset_t blocked{};
    ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    EXPECT_EQ(::sigismember(&blocked, SIGTERM), 1) << "the event loop would miss its signals";
  }

 private:
  const std::shared_ptr<std::latch> start_;
  std::promise<Records> end_;
  Records records_;
};

class BackgroundLogSinkTest : public testing::Test {
 protected:
  Records records() {
    sink_.reset();
    return end_.get();
  }

  const std::shared_ptr<std::latch> start_ = std::make_shared<std::latch>(1);
  std::promise<Records> written_;
  std::future<Records> end_ = written_.get_future();
  std::unique_ptr<BackgroundLogSink> sink_ =
      std::make_unique<BackgroundLogSink>(std::make_unique<SlowSink>(start_, std::move(written_)));
};

TEST_F(BackgroundLogSinkTest, recordsComeInOrderAndAreWrittenWhenItHasFinished) {
  Records expected;
  start_->count_down();
  for (int i = 0; i < 1000; ++i) {
    sink_->write(expected.emplace_back(std::to_string(i)));
  }
  EXPECT_EQ(records(), expected);
}

TEST_F(BackgroundLogSinkTest, aReaderThatIsStuckStopsNobodyAndGetsWhatFits) {
  const std::string large(BackgroundLogSink::kCapacity / 2, 'x');
  sink_->write("first");
  sink_->write(large);
  sink_->write(large);
  sink_->write(large);
  sink_->write("last");
  sink_.reset();  // gives up waiting
  start_->count_down();
  const Records expected{"first", large, std::string(LogSink::kLossText), "last"};
  EXPECT_TRUE(records() == expected);
}

}  // namespace
}  // namespace platform
