#include "control_client/TopModel.h"

#include <algorithm>

namespace quilletctl {

std::uint64_t TopModel::thisSecond() {
  constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
  return platform::DispatchTime::now().uptimeNanoseconds / kNanosecondsPerSecond;
}

void TopModel::add(const QueryEvent& query) {
  countInThisSecond(1);
  ++queries_;
  if (query.rule) {
    ++byRule_[static_cast<std::size_t>(*query.rule)];
  }
  addOutcome(query);
  applications_.add(query.application);
  names_.add(query.name);
}

void TopModel::addLost(std::uint64_t count) {
  countInThisSecond(count);
  faults_.lost += count;
}

std::vector<std::uint64_t> TopModel::perSecond() const {
  const auto now = thisSecond();
  std::vector<std::uint64_t> counts;
  for (std::uint64_t ago = kSeconds; ago > 0; --ago) {
    const auto number = now - std::min(now, ago);
    const auto& second = seconds_[number % seconds_.size()];
    counts.push_back(second.number == number && ago <= now ? second.queries : 0);
  }
  return counts;
}

void TopModel::countInThisSecond(std::uint64_t queries) {
  const auto now = thisSecond();
  auto& second = seconds_[now % seconds_.size()];
  if (second.number != now) {
    second = {now, 0};
  }
  second.queries += queries;
}

void TopModel::addOutcome(const QueryEvent& query) {
  if (!query.rcode) {
    ++faults_.unanswered;
    return;
  }
  faults_.serverFailure += *query.rcode == "SERVFAIL" ? 1U : 0U;
  faults_.refused += *query.rcode == "REFUSED" ? 1U : 0U;
  const auto* const bound = std::ranges::upper_bound(kTimeBounds, query.milliseconds);
  ++byTime_[static_cast<std::size_t>(bound - kTimeBounds.begin())];
}

}  // namespace quilletctl
