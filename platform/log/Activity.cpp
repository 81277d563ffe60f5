#include "platform/log/Activity.h"

#include <utility>

namespace platform {

namespace {

constinit thread_local const ActivityScope* innermost = nullptr;
constinit const Activity::Ref kNone;

bool isBriefIn(const Activity::Ref& activity) {
  return activity != nullptr && activity->mode() == LogMode::brief;
}

}  // namespace

const Activity::Ref& Activity::current() {
  return innermost != nullptr ? innermost->activity_ : kNone;
}

ActivityScope::ActivityScope(Activity::Ref activity)
    : activity_(std::move(activity)), outer_(std::exchange(innermost, this)) {
  detail::isActivityBrief = isBriefIn(activity_);
}

ActivityScope::~ActivityScope() {
  innermost = outer_;
  detail::isActivityBrief = isBriefIn(Activity::current());
}

}  // namespace platform
