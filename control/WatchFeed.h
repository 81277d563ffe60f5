#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/dispatch/Timer.h"
#include "platform/xpc/JSONRPCService.h"
#include "queries/QueryOutcome.h"

namespace quillet {

/// Tells watchers of each query that is over, as notifications `query`. A query's line is made once
/// and the lines of an instant go out together, so that a query costs the same for one watcher and
/// for hundreds, and next to nothing for none. Inside the event loop only.
class WatchFeed {
 public:
  /// How long lines are gathered.
  static constexpr double kGatheringSeconds = 0.05;
  /// Octets that are gathered; more go out at once. A watcher loses them together, if it does.
  static constexpr std::size_t kMaxGathered = 64UL * 1024;

  /// For as long as it is there.
  void add(const std::shared_ptr<platform::JSONRPCSubscriber>& watcher);
  void tell(const QueryOutcome& outcome);
  /// Sends what is gathered, as far as the watchers take it at once.
  void send();

 private:
  std::vector<std::weak_ptr<platform::JSONRPCSubscriber>> watchers_;
  std::string lines_;
  std::uint64_t count_ = 0;  // in `lines_`
  platform::Timer sending_;  // scheduled while there are lines
};

}  // namespace quillet
