#include "platform/foundation/LogSink.h"

#include <unistd.h>

#include <cerrno>

#include "platform/foundation/StreamLogSink.h"

namespace platform {

namespace {

thread_local int batchDepth = 0;

std::unique_ptr<LogSink>& sharedSink() {
  static std::unique_ptr<LogSink> sink =
      std::make_unique<StreamLogSink>(STDERR_FILENO, program_invocation_short_name);
  return sink;
}

}  // namespace

LogSink& LogSink::shared() { return *sharedSink(); }

void LogSink::setShared(std::unique_ptr<LogSink> sink) {
  sharedSink()->flush();
  sharedSink() = std::move(sink);
}

LogBatch::LogBatch() { ++batchDepth; }

LogBatch::~LogBatch() {
  if (--batchDepth == 0) {
    LogSink::shared().flush();
  }
}

bool LogBatch::isActive() { return batchDepth > 0; }

}  // namespace platform
