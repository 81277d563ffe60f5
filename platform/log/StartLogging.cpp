#include "platform/log/StartLogging.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <utility>

#include "platform/log/BackgroundLogSink.h"
#include "platform/log/CrashHandler.h"
#include "platform/log/JournalLogSink.h"
#include "platform/log/StreamLogSink.h"

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

bool isNullDevice(const struct stat& status) {
  struct stat null {};
  return S_ISCHR(status.st_mode) && ::stat("/dev/null", &null) == 0 &&
         status.st_rdev == null.st_rdev;
}

bool hasStandardErrorNoReader() {
  struct stat status {};
  return ::fstat(STDERR_FILENO, &status) == 0 && (S_ISREG(status.st_mode) || isNullDevice(status));
}

// Whatever is neither a file nor /dev/null has a reader, who may take long, or stop to read.
std::unique_ptr<LogSink> makeSink(std::string_view processName) {
  if (JournalLogSink::isStandardErrorJournal()) {
    return std::make_unique<BackgroundLogSink>(std::make_unique<JournalLogSink>(processName));
  }
  if (hasStandardErrorNoReader()) {
    return std::make_unique<StreamLogSink>(STDERR_FILENO, processName);
  }
  return std::make_unique<BackgroundLogSink>(std::make_unique<StreamLogSink>(
      STDERR_FILENO, processName, HeldBackLines::kUnlimitedPatience));
}

}  // namespace

void startLogging(std::string_view processName) {
  openMissingStandardStreams();
  ::signal(SIGPIPE, SIG_IGN);
  LogSink::setShared(makeSink(processName));
  writeLogOnCrash();
}

}  // namespace platform
