#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "platform/base/Data.h"

namespace quillet::fuzz {

struct WireEntries {
  /// How many a message has, section by section.
  std::array<std::size_t, 4> counts{};
  /// Where the last one begins.
  std::size_t last = 0;
};

/// What a walk over a message from length to length finds. Knows nothing of the message models.
/// Absent when the entries that the header counts do not end exactly with the last octet, or a
/// pointer stands where it leads nowhere before it. Without compression a pointer is a length as
/// any other.
std::optional<WireEntries> entriesOf(platform::DataView message, bool isCompressed);

}  // namespace quillet::fuzz
