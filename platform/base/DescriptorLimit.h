#pragma once

#include <cstddef>

namespace platform {

/// How many descriptors this process may have open at once (RLIMIT_NOFILE): the greatest number
/// when there is no limit, or none that the system tells.
std::size_t descriptorLimit();

/// Raises that limit to `wanted`, or as far as the system grants.
void raiseDescriptorLimit(std::size_t wanted);

}  // namespace platform
