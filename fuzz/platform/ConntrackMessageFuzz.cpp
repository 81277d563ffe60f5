// Whatever the kernel answers: addresses come out only of one family, and each of their octets
// stands in the answer.

#include <string_view>

#include "fuzz/Target.h"
#include "platform/senders/ConntrackMessage.h"

namespace quillet::fuzz {

using platform::SocketAddress;

std::string_view octetsOf(const SocketAddress& address) {
  const void* const octets =
      address.isIPv6() ? static_cast<const void*>(&address.v6().sin6_addr) : &address.v4().sin_addr;
  return {static_cast<const char*>(octets), address.isIPv6() ? sizeof(in6_addr) : sizeof(in_addr)};
}

void run(platform::DataView input) {
  const platform::Data copy(input.begin(), input.end());  // aligned
  const auto read = platform::readConntrackAnswer(copy, /*sequence=*/7);
  if (read) {
    require(read->source.family() == read->destination.family());
    require(platform::textOf(input).find(octetsOf(read->source)) != std::string_view::npos);
    require(platform::textOf(input).find(octetsOf(read->destination)) != std::string_view::npos);
  } else {
    require(static_cast<bool>(read.error()));
  }
}

}  // namespace quillet::fuzz
