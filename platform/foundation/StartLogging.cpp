#include "platform/foundation/StartLogging.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <memory>

#include "platform/foundation/BackgroundLogSink.h"
#include "platform/foundation/CrashHandler.h"
#include "platform/foundation/JournalLogSink.h"
#include "platform/foundation/StreamLogSink.h"

namespace platform {

namespace {

// No file or socket of the program may take the place of a standard stream that is closed: what is
// written to the stream would go there.
void openMissingStandardStreams() {
  int descriptor = -1;
  do {
    descriptor = ::open("/dev/null", O_RDWR);
  } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor >= 0) {
    ::close(descriptor);
  }
}

}  // namespace

void startLogging(std::string_view processName) {
  openMissingStandardStreams();
  ::signal(SIGPIPE, SIG_IGN);
  if (JournalLogSink::isStandardErrorJournal()) {
    // The journal may take long to read, or not read at all.
    LogSink::setShared(
        std::make_unique<BackgroundLogSink>(std::make_unique<JournalLogSink>(processName)));
  } else {
    LogSink::setShared(std::make_unique<StreamLogSink>(STDERR_FILENO, processName));
  }
  writeLogOnCrash();
}

}  // namespace platform
