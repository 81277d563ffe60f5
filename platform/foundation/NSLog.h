#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/foundation/Description.h"

namespace platform {

namespace detail {

/// The calling thread's buffer for the text being put together; kept, so that a record costs no allocation.
std::string& logText();
void writeLogText(std::string_view text);

}  // namespace detail

/// Writes one log record: the plain forms of `pieces`, one after another, verbatim.
///
///     NSLog("flows count = ", flows.size());
template <class... Pieces>
void NSLog(const Pieces&... pieces) {
  // Moved out while it is in use: describing a piece may itself write a record.
  std::string text = std::move(detail::logText());
  text.clear();
  (describe(text, pieces), ...);
  detail::writeLogText(text);
  detail::logText() = std::move(text);
}

}  // namespace platform
