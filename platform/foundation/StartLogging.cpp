#include "platform/foundation/StartLogging.h"

#include <unistd.h>

#include <csignal>
#include <memory>

#include "platform/foundation/CrashHandler.h"
#include "platform/foundation/JournalLogSink.h"
#include "platform/foundation/StreamLogSink.h"

namespace platform {

void startLogging(std::string_view processName) {
  ::signal(SIGPIPE, SIG_IGN);
  if (JournalLogSink::isStandardErrorJournal()) {
    LogSink::setShared(std::make_unique<JournalLogSink>(processName));
    return;
  }
  LogSink::setShared(std::make_unique<StreamLogSink>(STDERR_FILENO, processName));
  writeLogOnCrash();
}

}  // namespace platform
