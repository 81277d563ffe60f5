#pragma once

#include <cstdint>
#include <limits>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/log/HeldBackLines.h"
#include "platform/log/LogSink.h"

namespace platform {

/// Writes each record as one line (see `appendEscaped`) to a file descriptor:
/// `2026-11-22 22:19:54.123 NAME[PID] TEXT`, in local time. Where lines were lost (see
/// `HeldBackLines`), a record says so.
class StreamLogSink final : public LogSink {
 public:
  /// `descriptor` is borrowed and stays open; `processName` is the NAME of each line; `patience` is
  /// that of `HeldBackLines`.
  StreamLogSink(int descriptor, std::string_view processName,
                int patience = HeldBackLines::kPatience);
  StreamLogSink(const StreamLogSink&) = delete;
  StreamLogSink& operator=(const StreamLogSink&) = delete;
  ~StreamLogSink() override;

  void write(std::string_view text) override;
  void flush() override;
  void flushFromSignalHandler() noexcept override;

 private:
  static constexpr auto kNoHandler = std::numeric_limits<std::uint64_t>::max();

  void append(std::string_view text);
  bool takeTimeOfHandler();
  void updatePrefix();

  const std::string nameAndPid_;
  std::mutex mutex_;
  HeldBackLines lines_;  // guarded by mutex_
  std::string line_;     // guarded by mutex_: the line being put together
  std::string prefix_;   // guarded by mutex_: what stands before the text
  std::int64_t prefixTime_ =
      -1000;  // guarded by mutex_: milliseconds since 1970 that prefix_ shows
  std::uint64_t handler_ = kNoHandler;  // guarded by mutex_: the one whose time prefix_ shows
  int recordsLeft_ = 0;                 // guarded by mutex_: how many more may show it
};

}  // namespace platform
