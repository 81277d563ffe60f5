#include "platform/dispatch/EventLoop.h"

#include <utility>

#include "platform/base/Clock.h"
#include "platform/dispatch/RunGuarded.h"
#include "platform/log/LogSink.h"

namespace platform {

namespace {

// How often one iteration runs what its own work has given in turn. The stages of a query take six;
// work that gives itself again and again must not keep the sockets waiting.
constexpr int kMaxRounds = 16;

// How long an iteration goes on with work that was given, nanoseconds. Signals are seen between
// iterations.
constexpr std::uint64_t kMaxTime = 10'000'000;
// The clock is read at the begin of each round, and again after so many pieces of work.
constexpr std::size_t kPiecesToAReading = 8;

std::uint64_t uptime() { return Clock::system().uptimeNanoseconds(); }

}  // namespace

void EventLoop::add(Work work, Activity::Ref activity) {
  bool isAsleep = false;
  {
    const std::lock_guard lock(mutex_);
    given_.push_back({std::move(work), std::move(activity)});
    isAsleep = std::exchange(isWaiting_, false);
  }
  if (isAsleep) {
    events_.wake();
  }
}

void EventLoop::stop() {
  isStopping_ = true;
  events_.wake();
}

/// False when there is work already.
bool EventLoop::beginWaiting() {
  const std::lock_guard lock(mutex_);
  isWaiting_ = taken_.empty() && given_.empty();
  return isWaiting_;
}

void EventLoop::endWaiting() {
  const std::lock_guard lock(mutex_);
  isWaiting_ = false;
}

/// Takes over what was given; false when there is nothing to run.
bool EventLoop::takeGiven() {
  if (taken_.empty()) {
    const std::lock_guard lock(mutex_);
    taken_.swap(given_);
  }
  return !taken_.empty();
}

void EventLoop::runOneTaken() {
  const Given given = std::move(taken_.front());
  taken_.pop_front();
  const ActivityScope scope(given.activity ? given.activity : Activity::current());
  LogBatch::beginHandler();
  runGuarded(given.work);
}

bool EventLoop::runOneGiven() {
  const bool hasWork = takeGiven();
  if (hasWork) {
    runOneTaken();
  }
  return hasWork;
}

void EventLoop::runGiven() {
  const auto end = uptime() + kMaxTime;
  for (int round = 0; round < kMaxRounds && takeGiven(); ++round) {
    const auto count = taken_.size();
    for (std::size_t piece = 0; piece < count && !taken_.empty(); ++piece) {
      if (isStopping_ || (piece % kPiecesToAReading == 0 && uptime() > end)) {
        return;
      }
      runOneTaken();
    }
  }
}

bool EventLoop::runEvents(std::chrono::nanoseconds longest) {
  const bool mayWait = longest.count() > 0 && beginWaiting();
  const bool hasEvents = events_.wait(mayWait ? longest : std::chrono::nanoseconds(0));
  if (mayWait) {
    endWaiting();
  }
  ++iteration_;
  events_.handOut();
  return hasEvents;
}

}  // namespace platform
