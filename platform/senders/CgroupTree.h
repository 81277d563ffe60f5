#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <unordered_set>
#include <vector>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/senders/CgroupWalk.h"
#include "platform/senders/TimedCompletion.h"

namespace platform {

/// The cgroups of this machine by their ids. The tree is walked on a thread of its own: once at
/// start, and again for an id that no walk has seen. Who asks for one waits for that walk, and for
/// no more than `kMaxWait`; the walk goes on for those who come later. Inside the event loop only.
class CgroupTree : public std::enable_shared_from_this<CgroupTree> {
 public:
  /// Seconds.
  static constexpr double kMaxWait = 0.1;
  /// Walks that begin within one second.
  static constexpr std::size_t kMaxWalks = 2;
  /// Those who wait at a time; one holds a flow with its datagrams (64 KiB at most, usually under
  /// one). Further ones do not wait.
  static constexpr std::size_t kMaxWaiting = 1024;
  /// Ids that a walk has not found, which are not looked for again; some 40 octets each. When there
  /// are more, all are forgotten.
  static constexpr std::size_t kMaxMissing = 4096;

  /// Absent for a cgroup that is not known; valid during the call only.
  using Completion = std::function<void(const Cgroup* cgroup)>;

  /// The first walk begins.
  static std::shared_ptr<CgroupTree> start();

  /// Completes at once for an id that is known, and for one that waiting does not help.
  void find(std::uint64_t id, Completion completion);

 private:
  using Timed = TimedCompletion<const Cgroup*>;
  struct Waiting {
    std::uint64_t id = 0;
    std::uint64_t walk = 0;  // the first that began afterwards
    std::shared_ptr<Timed> completion;
  };

  CgroupTree() = default;

  [[nodiscard]] const Cgroup* known(std::uint64_t id) const;
  [[nodiscard]] double secondsUntilWalk() const;
  void walkSoon();
  void walk();
  void walked(std::shared_ptr<const CgroupNames> names);
  void answer(const Waiting& waiting);

  const DispatchQueue queue_ = DispatchQueue::serial();
  std::shared_ptr<const CgroupNames> names_ = std::make_shared<CgroupNames>();
  std::vector<Waiting> waiting_;
  std::unordered_set<std::uint64_t> missing_;
  std::deque<std::uint64_t> begun_;  // uptimes of the last walks
  std::uint64_t walks_ = 0;
  bool isWalking_ = false;
  bool isDue_ = false;
};

}  // namespace platform
