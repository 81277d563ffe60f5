#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "control_client/BusiestTexts.h"
#include "control_client/QueryEvent.h"
#include "control_client/RoutingRule.h"
#include "platform/base/Clock.h"

namespace quilletctl {

/// What `top` shows: counts of the queries that it was told of, since it was made. Its size is
/// bounded, whatever it is told. Time is that of the shared clock.
class TopModel {
 public:
  /// Whole seconds of which the number of queries is kept.
  static constexpr std::size_t kSeconds = 60;
  /// The bounds of the answer times, in milliseconds; each below its own and the one before not.
  /// What reaches the last stands in one more range.
  static constexpr std::array<double, 5> kTimeBounds{1, 5, 20, 100, 500};

  struct Faults {
    std::uint64_t unanswered = 0;
    std::uint64_t serverFailure = 0;
    std::uint64_t refused = 0;
    /// Queries that the proxy did not tell of, as there were too many.
    std::uint64_t lost = 0;
  };

  void add(const QueryEvent& query);
  /// Counts as queries of this second, and nowhere else.
  void addLost(std::uint64_t count);

  /// Queries in each of the last `kSeconds` whole seconds, the oldest first.
  [[nodiscard]] std::vector<std::uint64_t> perSecond() const;
  /// Whole seconds since it was made.
  [[nodiscard]] std::uint64_t age() const { return thisSecond() - begin_; }

  [[nodiscard]] std::uint64_t queries() const { return queries_; }
  /// By the rule's number.
  [[nodiscard]] std::uint64_t ofRule(int number) const {
    return byRule_[static_cast<std::size_t>(number)];
  }
  /// Answers by the ranges of their times.
  [[nodiscard]] const std::array<std::uint64_t, kTimeBounds.size() + 1>& byTime() const {
    return byTime_;
  }
  [[nodiscard]] const Faults& faults() const { return faults_; }
  [[nodiscard]] const BusiestTexts& applications() const { return applications_; }
  [[nodiscard]] const BusiestTexts& names() const { return names_; }

 private:
  struct Second {
    std::uint64_t number = 0;
    std::uint64_t queries = 0;
  };

  static std::uint64_t thisSecond();
  void countInThisSecond(std::uint64_t queries);
  void addOutcome(const QueryEvent& query);

  std::uint64_t begin_ = thisSecond();
  /// A second's place is its number modulo the size: it takes that of one that is too old.
  std::array<Second, kSeconds + 1> seconds_{};
  std::uint64_t queries_ = 0;
  std::array<std::uint64_t, std::size(kRoutingRules)> byRule_{};
  std::array<std::uint64_t, kTimeBounds.size() + 1> byTime_{};
  Faults faults_;
  BusiestTexts applications_;
  BusiestTexts names_;
};

}  // namespace quilletctl
