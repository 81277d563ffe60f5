#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "platform/foundation/Data.h"

namespace quillet::fuzz {

/// How many entries a message has, section by section, found by walking over it from length to
/// length. Knows nothing of the message model. Absent when the entries that the header counts do
/// not end exactly with the last octet, or a pointer stands where it leads nowhere before it.
std::optional<std::array<std::size_t, 4>> entriesOf(platform::DataView message);

}  // namespace quillet::fuzz
