#include "platform/dispatch/RunGuarded.h"

#include "platform/log/NSLog.h"

namespace platform::detail {

void logThrown(const char* what) noexcept {
  try {
    NSLog("MainLoop: a handler has thrown: ", what);
  } catch (const std::exception&) {
    // No memory for the line either: the loop goes on all the same.
  }
}

}  // namespace platform::detail
