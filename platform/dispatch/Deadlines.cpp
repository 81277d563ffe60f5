#include "platform/dispatch/Deadlines.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/base/Clock.h"
#include "platform/dispatch/RunGuarded.h"
#include "platform/log/LogSink.h"

namespace platform {

namespace {

// Some thirty years: nanoseconds of more seconds would not fit.
constexpr double kMaxSeconds = 1e9;

std::uint64_t now() { return Clock::shared().uptimeNanoseconds(); }

}  // namespace

void Deadlines::add(double seconds, std::function<void()> work) {
  const auto due = now() + static_cast<std::uint64_t>(std::clamp(seconds, 0.0, kMaxSeconds) * 1e9);
  waiting_.emplace(due, std::move(work));
}

bool Deadlines::runDue() {
  if (waiting_.empty()) {
    return false;
  }
  const auto end = waiting_.upper_bound(now());
  std::vector<std::function<void()>> due;
  for (auto entry = waiting_.begin(); entry != end; ++entry) {
    due.push_back(std::move(entry->second));
  }
  if (due.empty()) {
    return false;
  }
  waiting_.erase(waiting_.begin(), end);
  for (const auto& work : due) {
    LogBatch::beginHandler();
    runGuarded(work);
  }
  return true;
}

std::chrono::nanoseconds Deadlines::untilNext() const {
  if (waiting_.empty()) {
    return std::chrono::nanoseconds::max();
  }
  const auto due = waiting_.begin()->first;
  return std::chrono::nanoseconds(due - std::min(due, now()));
}

}  // namespace platform
