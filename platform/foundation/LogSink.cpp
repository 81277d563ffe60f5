#include "platform/foundation/LogSink.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <mutex>

#include "platform/foundation/StreamLogSink.h"

namespace platform {

namespace {

thread_local int batchDepth = 0;

std::atomic<LogSink*> inUse{nullptr};  // owned

std::unique_ptr<LogSink> makeStandardErrorSink() {
  return std::make_unique<StreamLogSink>(STDERR_FILENO, program_invocation_short_name);
}

}  // namespace

LogSink& LogSink::shared() {
  LogSink* sink = inUse.load(std::memory_order_acquire);
  if (sink == nullptr) {
    static std::once_flag once;
    std::call_once(once, [] { setShared(nullptr); });
    sink = inUse.load(std::memory_order_acquire);
  }
  return *sink;
}

void LogSink::setShared(std::unique_ptr<LogSink> sink) {
  static const int atExit = std::atexit([] { shared().finish(); });
  static_cast<void>(atExit);
  if (sink == nullptr) {
    sink = makeStandardErrorSink();
  }
  const std::unique_ptr<LogSink> former(inUse.exchange(sink.release(), std::memory_order_acq_rel));
}

void LogSink::flushSharedFromSignalHandler() noexcept {
  if (LogSink* const sink = inUse.load(std::memory_order_acquire)) {
    sink->flushFromSignalHandler();
  }
}

LogBatch::LogBatch() { ++batchDepth; }

LogBatch::~LogBatch() {
  if (--batchDepth == 0) {
    LogSink::shared().flush();
  }
}

bool LogBatch::isActive() { return batchDepth > 0; }

}  // namespace platform
