#pragma once

#include <string>
#include <utility>

#include "platform/base/Description.h"

namespace platform {

namespace detail {

/// An empty text to put a record together in. It brings the memory of the thread's last one, so
/// that a record costs no allocation.
std::string takeLogText();
/// Writes the finished text as one record and keeps its memory for the next.
void writeLogText(std::string text);

}  // namespace detail

/// Writes one log record: the plain forms of `pieces` in their order, verbatim up to
/// `kMaxDescription`; one that is cut there says so.
///
///     NSLog("flows count = ", flows.size());
template <class... Pieces>
void NSLog(const Pieces&... pieces) {
  std::string text = detail::takeLogText();
  (describe(text, pieces), ...);
  detail::writeLogText(std::move(text));
}

}  // namespace platform
