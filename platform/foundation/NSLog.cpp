#include "platform/foundation/NSLog.h"

#include "platform/foundation/LogSink.h"

namespace platform::detail {

std::string& logText() {
  thread_local std::string text;
  return text;
}

void writeLogText(std::string_view text) { LogSink::shared().write(text); }

}  // namespace platform::detail
