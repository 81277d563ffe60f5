#include "control/QueryCounters.h"

namespace quillet {

void QueryCounters::count(const QueryOutcome& outcome) {
  ++byRule.at(static_cast<std::size_t>(outcome.rule));
  ++(outcome.transport == platform::Transport::tcp ? tcp : udp);
  if (outcome.rule == QueryOutcome::kDeclined && !outcome.server.empty()) {
    ++declined;
  } else if (outcome.rcode) {
    ++answered;
    times.add(outcome.milliseconds);
  } else {
    ++unanswered;
  }
}

}  // namespace quillet
