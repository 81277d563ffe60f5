#include "platform/dispatch/EventLoop.h"

#include <utility>

#include "platform/base/Clock.h"
#include "platform/dispatch/RunGuarded.h"

namespace platform {

namespace {

// How often one iteration runs what its own work has given in turn. The stages of a query take six;
// work that gives itself again and again must not keep the sockets waiting.
constexpr int kMaxRounds = 16;

// How long an iteration goes on with work that was given, nanoseconds. Signals are seen between
// iterations.
constexpr std::uint64_t kMaxTime = 10'000'000;

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
  isWaiting_ = given_.empty();
  return isWaiting_;
}

void EventLoop::endWaiting() {
  const std::lock_guard lock(mutex_);
  isWaiting_ = false;
}

std::size_t EventLoop::givenCount() {
  const std::lock_guard lock(mutex_);
  return given_.size();
}

std::optional<EventLoop::Given> EventLoop::takeGiven() {
  const std::lock_guard lock(mutex_);
  if (given_.empty()) {
    return std::nullopt;
  }
  std::optional<Given> given = std::move(given_.front());
  given_.pop_front();
  return given;
}

bool EventLoop::runOneGiven() {
  const auto given = takeGiven();
  if (given) {
    const ActivityScope scope(given->activity ? given->activity : Activity::current());
    runGuarded(given->work);
  }
  return given.has_value();
}

void EventLoop::runGiven() {
  const auto end = uptime() + kMaxTime;
  for (int round = 0; round < kMaxRounds; ++round) {
    for (auto count = givenCount(); count > 0; --count) {
      if (isStopping_ || uptime() > end) {
        return;
      }
      runOneGiven();
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
