#pragma once

#include <array>
#include <cstdint>

#include "control/AnswerTimes.h"
#include "queries/QueryOutcome.h"

namespace quillet {

/// What has become of the queries since the start. Each is answered, unanswered or declined; one
/// that was given up before anything was decided is unanswered, under rule 0.
struct QueryCounters {
  void count(const QueryOutcome& outcome);

  /// By rule; 0 for those that were declined.
  std::array<std::uint64_t, 6> byRule{};
  std::uint64_t udp = 0;
  std::uint64_t tcp = 0;
  std::uint64_t answered = 0;
  std::uint64_t unanswered = 0;
  std::uint64_t declined = 0;
  /// Of those that were answered.
  AnswerTimes times;
};

}  // namespace quillet
