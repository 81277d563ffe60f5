#pragma once

#include <memory>

#include "platform/log/LogMode.h"

namespace platform {

/// One cause, such as a query, and all that it sets going, as the system's activity tracing
/// (os_activity) knows it. What a queue, a connection or a flow runs later runs in the activity
/// that gave it, so an activity lasts until nothing of it can run any more; then it is destroyed.
/// Delayed work (`DispatchQueue::asyncAfter`, `Timer`) is of no activity.
class Activity {
 public:
  using Ref = std::shared_ptr<Activity>;

  Activity() = default;
  Activity(const Activity&) = delete;
  Activity& operator=(const Activity&) = delete;
  virtual ~Activity() = default;

  /// The mode in which it began, and in which its steps are told to the end.
  [[nodiscard]] LogMode mode() const { return mode_; }

  /// The one that the calling thread runs in; nullptr for none.
  static const Ref& current();

 private:
  const LogMode mode_ = logMode();
};

/// While it lives, its thread runs in an activity, or in none.
class ActivityScope {
 public:
  explicit ActivityScope(Activity::Ref activity);
  ~ActivityScope();
  ActivityScope(const ActivityScope&) = delete;
  ActivityScope& operator=(const ActivityScope&) = delete;

 private:
  const Activity::Ref activity_;
  const ActivityScope* const outer_;

  friend class Activity;
};

namespace detail {

/// Whether the thread runs in an activity that began in brief mode.
inline constinit thread_local bool isActivityBrief = false;

}  // namespace detail

/// Whether the steps of what runs on this thread are recorded: not in an activity that began in
/// brief mode.
inline bool logsSteps() { return !detail::isActivityBrief; }

}  // namespace platform
