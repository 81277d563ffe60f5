// Whatever the kernel answers: addresses come out only of one family, and each of their octets
// stands in the answer.

#include <algorithm>
#include <cstring>

#include "fuzz/Target.h"
#include "platform/senders/ConntrackMessage.h"

namespace {

using platform::DataView;
using platform::SocketAddress;
using quillet::fuzz::require;

bool holds(DataView input, const void* bytes, std::size_t size) {
  const auto* const first = static_cast<const std::uint8_t*>(bytes);
  return std::search(input.begin(), input.end(), first, first + size) != input.end();
}

void checkStandsIn(DataView input, const SocketAddress& address) {
  const auto port = htons(address.port());
  require(holds(input, &port, sizeof port));
  require(address.isIPv6() ? holds(input, &address.v6().sin6_addr, sizeof(in6_addr))
                           : holds(input, &address.v4().sin_addr, sizeof(in_addr)));
}

}  // namespace

void quillet::fuzz::run(DataView input) {
  constexpr std::uint32_t kSequence = 7;
  const platform::Data copy(input.begin(), input.end());  // aligned
  const auto read = platform::readConntrackAnswer(copy, kSequence);
  if (!read) {
    require(static_cast<bool>(read.error()));
    return;
  }
  require(read->source.family() == read->destination.family());
  checkStandsIn(input, read->source);
  checkStandsIn(input, read->destination);
}
