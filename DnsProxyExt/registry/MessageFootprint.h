#pragma once

#include <cstddef>

#include "dns_tools/Message.h"

namespace quillet {

/// Octets on the heap that a decoded message holds, never too low: entries of a section count as
/// the largest kind of them, texts as the room they have. The message's own size is not counted.
std::size_t footprintOf(const DnsToolsSocket::Message& message);

}  // namespace quillet
