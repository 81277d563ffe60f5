#pragma once

#include <sys/socket.h>

#include <cerrno>
#include <system_error>

namespace platform {

/// The error of the system call that has just given `result`; none unless that is negative.
inline std::error_code errorOf(long result) {
  return result < 0 ? std::error_code(errno, std::generic_category()) : std::error_code();
}

inline std::error_code setOption(int socket, int level, int name, int value) {
  return errorOf(::setsockopt(socket, level, name, &value, sizeof value));
}

}  // namespace platform
