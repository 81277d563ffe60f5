#pragma once

#include <string>
#include <utility>

#include "platform/base/Description.h"
#include "platform/log/Activity.h"

namespace platform {

namespace detail {

/// An empty text to put a record together in. It brings the memory of the thread's last one, so
/// that a record costs no allocation.
std::string takeLogText();
/// Writes the finished text as one record and keeps its memory for the next.
void writeLogText(std::string text);

}  // namespace detail

/// A piece of a record that takes work to make: made when the record is written, and only then.
///
///     NSLogStep("flow = ", Lazily([&] { return flow->debugDescription(); }));
template <class Make>
struct Lazily {
  explicit Lazily(Make makes) : make(std::move(makes)) {}
  void describe(std::string& out) const { platform::describe(out, make()); }

  const Make make;
};

/// Writes one log record: the plain forms of `pieces` in their order, verbatim up to
/// `kMaxDescription`; one that is cut there says so.
///
///     NSLog("flows count = ", flows.size());
///
/// It is written in both modes of the log: it tells of a start or a stop, of settings, a command,
/// the policy, a report or a fault. What goes on with each query is told by `NSLogStep`.
template <class... Pieces>
void NSLog(const Pieces&... pieces) {
  std::string text = detail::takeLogText();
  (describe(text, pieces), ...);
  detail::writeLogText(std::move(text));
}

/// Writes one log record about a step of an activity, unless that is told briefly: then it costs
/// the test of one flag. What its pieces cost to make stands in a `Lazily`; other work that only
/// the log wants, in an `if (logsSteps())`.
template <class... Pieces>
void NSLogStep(const Pieces&... pieces) {
  if (logsSteps()) {
    NSLog(pieces...);
  }
}

}  // namespace platform
