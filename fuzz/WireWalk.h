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

inline std::size_t numberAt(platform::DataView message, std::size_t at) {
  return at + 2 <= message.size() ? message[at] * 256U + message[at + 1] : 0;
}

/// Where the name that begins there ends; past the end of the message when it is broken.
inline std::size_t endOfName(platform::DataView message, std::size_t at, bool isCompressed) {
  while (at < message.size()) {
    const std::size_t length = message[at];
    if (length > 0xBF && isCompressed) {
      return numberAt(message, at) % 0x4000 < at ? at + 2 : message.size() + 1;
    }
    at += 1 + length;
    if (length == 0) {
      return at;
    }
  }
  return message.size() + 1;
}

/// What a walk over a message from length to length finds. Knows nothing of the message models.
/// Absent when the entries that the header counts do not end exactly with the last octet, or a
/// pointer stands where it leads nowhere before it. Without compression a pointer is a length as
/// any other.
inline std::optional<WireEntries> entriesOf(platform::DataView message, bool isCompressed) {
  WireEntries found;
  std::size_t at = 12;
  for (std::size_t section = 0; section < found.counts.size(); ++section) {
    const auto count = numberAt(message, 4 + 2 * section);
    for (; found.counts[section] < count && at < message.size(); ++found.counts[section]) {
      found.last = at;
      at = endOfName(message, at, isCompressed);
      at += section == 0 ? 4 : 10 + numberAt(message, at + 8);
    }
  }
  return at == message.size() ? std::optional(found) : std::nullopt;
}

}  // namespace quillet::fuzz
