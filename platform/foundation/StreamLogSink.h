#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/foundation/LogSink.h"

namespace platform {

/// Appends `text` to `out` such that it stays one line and reaches no terminal raw: a line feed becomes
/// `\n`; any other control character (C0, DEL, C1) and any byte that is not part of valid UTF-8 becomes
/// `\xNN`.
void appendEscaped(std::string& out, std::string_view text);

/// Writes each record as one line to a file descriptor:
/// `2026-11-22 22:19:54.123 NAME[PID] TEXT`, in local time.
class StreamLogSink final : public LogSink {
 public:
  /// `descriptor` is borrowed and stays open; `processName` is the NAME of each line.
  StreamLogSink(int descriptor, std::string_view processName);
  ~StreamLogSink() override;

  void write(std::string_view text) override;
  void flush() override;

 private:
  void appendPrefix();
  void flushLocked();

  const int descriptor_;
  const std::string nameAndPid_;
  std::mutex mutex_;
  std::string lines_;               // guarded by mutex_: whole lines not yet written
  std::int64_t prefixSecond_ = -1;  // guarded by mutex_: the second that datePrefix_ shows
  std::string datePrefix_;          // guarded by mutex_
};

}  // namespace platform
