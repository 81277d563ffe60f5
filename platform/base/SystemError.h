#pragma once

#include <cerrno>
#include <system_error>

namespace platform {

/// The error of an errno value; none for 0.
inline std::error_code systemError(int code) { return {code, std::generic_category()}; }

/// The error of the system call that has just failed.
inline std::error_code lastError() { return systemError(errno); }

/// The error of the system call that has just given `result`; none unless that is negative.
inline std::error_code errorOf(long result) { return result < 0 ? lastError() : std::error_code(); }

}  // namespace platform
