#include "platform/log/LogSink.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>

namespace platform {

namespace {

thread_local int batchDepth = 0;
thread_local std::uint64_t handlerCount = 0;

std::atomic<LogSink*> inUse{nullptr};  // owned

/// For a process that has put none in use: records as they are, one line each.
class PlainSink final : public LogSink {
 public:
  void write(std::string_view text) override {
    std::string line(text);
    line.push_back('\n');
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
  }
};

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
    sink = std::make_unique<PlainSink>();
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

void LogBatch::beginHandler() { ++handlerCount; }

std::uint64_t LogBatch::handler() { return handlerCount; }

}  // namespace platform
