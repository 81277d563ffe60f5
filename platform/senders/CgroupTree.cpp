#include "platform/senders/CgroupTree.h"

#include <utility>

#include "platform/base/Clock.h"
#include "platform/log/NSLog.h"

namespace platform {

namespace {

constexpr std::uint64_t kSecond = 1'000'000'000;

std::uint64_t uptime() { return Clock::shared().uptimeNanoseconds(); }

}  // namespace

std::shared_ptr<CgroupTree> CgroupTree::start() {
  std::shared_ptr<CgroupTree> tree(new CgroupTree);
  tree->walk();
  return tree;
}

const Cgroup* CgroupTree::known(std::uint64_t id) const {
  const auto found = names_->byId.find(id);
  return found != names_->byId.end() ? &found->second : nullptr;
}

void CgroupTree::find(std::uint64_t id, Completion completion) {
  const auto* const cgroup = known(id);
  if (cgroup != nullptr || missing_.contains(id)) {
    completion(cgroup);
    return;
  }
  const auto next = walks_ + 1;
  walkSoon();
  if (waiting_.size() < kMaxWaiting && (isWalking_ || secondsUntilWalk() < kMaxWait)) {
    waiting_.push_back({id, next, Timed::within(kMaxWait, std::move(completion))});
  } else {
    completion(nullptr);
  }
}

double CgroupTree::secondsUntilWalk() const {
  const auto passed = begun_.size() < kMaxWalks ? kSecond : uptime() - begun_.front();
  return passed >= kSecond ? 0 : static_cast<double>(kSecond - passed) / kSecond;
}

void CgroupTree::walkSoon() {
  if (isWalking_ || isDue_) {
    return;
  }
  const auto seconds = secondsUntilWalk();
  if (seconds == 0) {
    walk();
    return;
  }
  isDue_ = true;
  DispatchQueue::global().asyncAfter(seconds, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) {
      self->isDue_ = false;
      self->walk();
    }
  });
}

void CgroupTree::walk() {
  isWalking_ = true;
  ++walks_;
  begun_.push_back(uptime());
  if (begun_.size() > kMaxWalks) {
    begun_.pop_front();
  }
  queue_.async([weak = weak_from_this(), before = names_, now = uptime()] {
    const auto names = std::make_shared<CgroupNames>(CgroupNames::walk());
    names->keepGone(*before, now);
    DispatchQueue::global().async([weak, names] {
      if (const auto self = weak.lock()) {
        self->walked(names);
      }
    });
  });
}

void CgroupTree::walked(std::shared_ptr<const CgroupNames> names) {
  isWalking_ = false;
  if (names->byId.empty() && walks_ == 1) {
    NSLog("CgroupTree: there are no cgroups of version 2 to be seen");
  }
  // What is let go of has thousands of names to free, which the event loop has no time for.
  queue_.async([old = std::exchange(names_, std::move(names))] {});
  for (auto& waiting : std::exchange(waiting_, {})) {
    if (known(waiting.id) != nullptr || waiting.walk <= walks_) {
      answer(waiting);
    } else if (!waiting.completion->isDone()) {
      waiting_.push_back(std::move(waiting));
    }
  }
  if (!waiting_.empty()) {
    walkSoon();
  }
}

void CgroupTree::answer(const Waiting& waiting) {
  const auto* const cgroup = known(waiting.id);
  if (cgroup == nullptr && names_->isComplete) {
    if (missing_.size() >= kMaxMissing) {
      missing_.clear();
    }
    missing_.insert(waiting.id);
  }
  waiting.completion->complete(cgroup);
}

}  // namespace platform
