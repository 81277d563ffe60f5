#include "platform/log/BackgroundLogSink.h"

#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <ctime>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace platform {

namespace {

std::size_t costOf(std::string_view record) {
  return BackgroundLogSink::kRecordCost + record.size();
}

/// Keeps signals from the threads that are started while it lives: they are the event loop's.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all{};
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &former_);
  }
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &former_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t former_{};
};

}  // namespace

struct BackgroundLogSink::State {
  explicit State(std::unique_ptr<LogSink> theSink) : sink(std::move(theSink)) {}

  const std::unique_ptr<LogSink> sink;
  std::mutex mutex;
  std::condition_variable hasNews;   // `waiting` or `isEnding`
  std::vector<std::string> waiting;  // guarded by mutex
  bool isEnding = false;             // guarded by mutex
  bool hasLoss = false;              // guarded by mutex
  /// The cost of what waits or is being written. It grows under the mutex.
  std::atomic<std::size_t> unwritten{0};

  void add(std::string_view record) {
    waiting.emplace_back(record);
    unwritten += costOf(record);
  }
};

BackgroundLogSink::BackgroundLogSink(std::unique_ptr<LogSink> sink)
    : state_(std::make_shared<State>(std::move(sink))) {
  const SignalsBlocked blocked;
  std::thread([state = state_] { run(*state); }).detach();
}

BackgroundLogSink::~BackgroundLogSink() {
  finish();
  const std::lock_guard lock(state_->mutex);
  state_->isEnding = true;
  state_->hasNews.notify_one();
}

void BackgroundLogSink::write(std::string_view text) {
  const std::lock_guard lock(state_->mutex);
  if (state_->unwritten + costOf(kLossText) + costOf(text) > kCapacity) {
    state_->hasLoss = true;
    return;
  }
  if (std::exchange(state_->hasLoss, false)) {
    state_->add(kLossText);
  }
  state_->add(text);
  state_->hasNews.notify_one();
}

void BackgroundLogSink::finish() { waitUntilWritten(); }

void BackgroundLogSink::flushFromSignalHandler() noexcept { waitUntilWritten(); }

/// Safe in a signal handler.
void BackgroundLogSink::waitUntilWritten() const noexcept {
  constexpr timespec kMillisecond{0, 1'000'000};
  for (int left = kPatience; left > 0 && state_->unwritten != 0; --left) {
    ::nanosleep(&kMillisecond, nullptr);
  }
}

void BackgroundLogSink::run(State& state) {
  std::unique_lock lock(state.mutex);
  while (true) {
    state.hasNews.wait(lock, [&state] { return !state.waiting.empty() || state.isEnding; });
    if (state.waiting.empty()) {
      return;
    }
    const auto records = std::exchange(state.waiting, {});
    lock.unlock();
    for (const auto& record : records) {
      state.sink->write(record);
      state.unwritten -= costOf(record);
    }
    lock.lock();
  }
}

}  // namespace platform
