#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>

#include "platform/dispatch/SocketEvents.h"
#include "platform/log/Activity.h"

namespace platform {

/// What the thread of a queue does: it runs the work that it is given, tells watchers what happens
/// at their sockets, and waits while there is neither. On that thread only, but for `add` and
/// `stop`.
class EventLoop {
 public:
  using Work = std::function<void()>;
  static constexpr auto kForEver = std::chrono::nanoseconds::max();

  /// The work runs in `activity`; with nullptr in the one that the loop itself runs in. Any thread
  /// may call it.
  void add(Work work, Activity::Ref activity = nullptr);
  /// Nothing runs after the handler that is running, until `resume`. Any thread may call it.
  void stop();
  void resume() { isStopping_ = false; }
  [[nodiscard]] bool isStopping() const { return isStopping_; }

  /// Runs one piece of work; false when there is none.
  bool runOneGiven();
  /// Runs the work that is there, and what it gives in turn within bounds.
  void runGiven();
  /// Hands out what happens at the sockets; waits for it while there is no work, but no longer than
  /// `longest`. False when nothing has happened.
  bool runEvents(std::chrono::nanoseconds longest);

  /// Counts how often `runEvents` was called. On the loop's thread.
  [[nodiscard]] std::uint64_t iteration() const { return iteration_; }

  SocketEvents& socketEvents() { return events_; }

 private:
  struct Given {
    Work work;
    Activity::Ref activity;
  };

  bool beginWaiting();
  void endWaiting();
  bool takeGiven();
  void runOneTaken();

  std::atomic<bool> isStopping_{false};
  std::uint64_t iteration_ = 1;
  SocketEvents events_{isStopping_};

  std::deque<Given> taken_;  // what runs next, before `given_`; on the loop's thread

  std::mutex mutex_;
  std::deque<Given> given_;  // guarded by mutex_
  bool isWaiting_ = false;   // guarded by mutex_: the thread may be asleep
};

}  // namespace platform
