#include "fuzz/WireWalk.h"

namespace quillet::fuzz {

namespace {

using platform::DataView;

std::size_t number(DataView message, std::size_t at) {
  return at + 2 <= message.size() ? message[at] * 256U + message[at + 1] : 0;
}

// Where the name that begins there ends; past the end of the message when it is broken.
std::size_t endOfName(DataView message, std::size_t at, bool isCompressed) {
  while (at < message.size()) {
    const std::size_t length = message[at];
    if (length == 0) {
      return at + 1;
    }
    if (length > 0xBF && isCompressed) {
      return number(message, at) % 0x4000 < at ? at + 2 : message.size() + 1;
    }
    at += 1 + length;
  }
  return message.size() + 1;
}

}  // namespace

std::optional<WireEntries> entriesOf(DataView message, bool isCompressed) {
  WireEntries found;
  std::size_t at = 12;
  for (std::size_t section = 0; section < found.counts.size(); ++section) {
    const auto count = number(message, 4 + 2 * section);
    while (found.counts[section] < count && at < message.size()) {
      found.last = at;
      at = endOfName(message, at, isCompressed);
      at += section == 0 ? 4 : 10 + number(message, at + 8);
      ++found.counts[section];
    }
  }
  return at == message.size() ? std::optional(found) : std::nullopt;
}

}  // namespace quillet::fuzz
