#pragma once

#include <sys/socket.h>

#include "platform/base/SystemError.h"

namespace platform {

inline std::error_code setOption(int socket, int level, int name, int value) {
  return errorOf(::setsockopt(socket, level, name, &value, sizeof value));
}

/// Takes the error that waits at the socket, if one does: it is no error of the next call then.
inline std::error_code takeError(int socket) {
  int code = 0;
  socklen_t size = sizeof code;
  return ::getsockopt(socket, SOL_SOCKET, SO_ERROR, &code, &size) == 0 ? systemError(code)
                                                                       : lastError();
}

}  // namespace platform
