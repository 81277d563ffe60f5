#pragma once

#include <string>

namespace platform {

/// The identifier of the current system time zone, for example `Europe/Ljubljana`; `UTC` when the system
/// names none. Follows changes of the system's setting within a second. Not thread-safe.
std::string currentTimeZoneIdentifier();

}  // namespace platform
