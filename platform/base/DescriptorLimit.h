#pragma once

#include <cstddef>

namespace platform {

/// How many descriptors this process may have open (RLIMIT_NOFILE); unlimited too when the system
/// does not tell.
std::size_t descriptorLimit();

/// Raises that limit to `wanted`, or as far as the system grants.
void raiseDescriptorLimit(std::size_t wanted);

}  // namespace platform
