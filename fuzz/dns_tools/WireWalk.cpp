#include "fuzz/dns_tools/WireWalk.h"

namespace quillet::fuzz {

namespace {

using platform::DataView;

std::size_t number(DataView message, std::size_t at) {
  return at + 2 <= message.size() ? message[at] * 256U + message[at + 1] : 0;
}

// Where the name that begins there ends; behind the end of the message when it is broken.
std::size_t endOfName(DataView message, std::size_t at) {
  while (at < message.size()) {
    const std::size_t length = message[at];
    if (length == 0) {
      return at + 1;
    }
    if (length > 0xBF) {
      return number(message, at) % 0x4000 < at ? at + 2 : message.size() + 1;
    }
    at += 1 + length;
  }
  return message.size() + 1;
}

std::size_t endOfEntry(DataView message, std::size_t at, bool isQuestion) {
  const auto name = endOfName(message, at);
  return isQuestion ? name + 4 : name + 10 + number(message, name + 8);
}

}  // namespace

std::optional<std::array<std::size_t, 4>> entriesOf(DataView message) {
  std::array<std::size_t, 4> found{};
  std::size_t at = 12;
  for (std::size_t section = 0; section < found.size(); ++section) {
    const auto count = number(message, 4 + 2 * section);
    while (found[section] < count && at < message.size()) {
      at = endOfEntry(message, at, section == 0);
      ++found[section];
    }
  }
  if (at != message.size()) {
    return std::nullopt;
  }
  return found;
}

}  // namespace quillet::fuzz
