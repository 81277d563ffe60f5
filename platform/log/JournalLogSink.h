#pragma once

#include <string>
#include <string_view>

#include "platform/log/LogSink.h"

namespace platform {

/// Writes each record to the journal by its native protocol, so that a record is one entry whatever
/// it holds: `MESSAGE` is the text, byte for byte. Nothing is held back. When the journal's queue
/// is full, writing waits, as for everybody who writes to the journal; when there is no journal,
/// records are lost.
class JournalLogSink final : public LogSink {
 public:
  /// `processName` becomes the entries' SYSLOG_IDENTIFIER.
  explicit JournalLogSink(std::string_view processName);

  void write(std::string_view text) override;

  /// Whether this process' standard error is connected to the journal (systemd.exec(5),
  /// JOURNAL_STREAM).
  static bool isStandardErrorJournal();

 private:
  const std::string identifierField_;
};

}  // namespace platform
