#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

namespace platform {

/// Where log records end up. One call of `write` is one record; any thread may call it.
class LogSink {
 public:
  /// The record that a sink writes where others were lost.
  static constexpr std::string_view kLossText = "(log records were lost here)";

  LogSink() = default;
  LogSink(const LogSink&) = delete;
  LogSink& operator=(const LogSink&) = delete;
  virtual ~LogSink() = default;

  /// Takes one finished text, whatever bytes it holds. Never fails: a record that cannot be written
  /// is lost, the process goes on.
  virtual void write(std::string_view text) = 0;

  /// Hands on what `write` held back during a `LogBatch`. A sink does so at its own end, too.
  virtual void flush() {}

  /// At the end of the process: waits, not for long, until all is written.
  virtual void finish() { flush(); }

  /// The same for a signal handler of a process that is about to end: takes no lock, allocates
  /// nothing.
  virtual void flushFromSignalHandler() noexcept {}

  /// The sink in use; lines on standard error, as they are, until `setShared` gives another.
  /// It is finished at exit and never destroyed, so what runs then may still log.
  static LogSink& shared();
  /// Puts `sink` in use, or that first one again for nullptr. To be called while no other thread
  /// runs.
  static void setShared(std::unique_ptr<LogSink> sink);
  /// Calls `flushFromSignalHandler` of the sink in use, when there is one.
  static void flushSharedFromSignalHandler() noexcept;
};

/// While one of these lives on a thread, a sink may hold that thread's records back to write many
/// at once; the last one to go flushes the sink. An event loop holds one while it runs the handlers
/// that are ready, never while it waits, so that no record outlives the iteration that wrote
/// it.
class LogBatch {
 public:
  LogBatch();
  ~LogBatch();
  LogBatch(const LogBatch&) = delete;
  LogBatch& operator=(const LogBatch&) = delete;

  /// Whether the calling thread is inside a batch.
  static bool isActive();

  /// Tells that another handler runs now on the calling thread. The records of one handler may
  /// show the same time, so that not each of them costs a reading of the clock.
  static void beginHandler();
  /// Another number in each handler.
  static std::uint64_t handler();
};

}  // namespace platform
