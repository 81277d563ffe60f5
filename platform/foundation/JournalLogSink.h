#pragma once

#include <string>
#include <string_view>

#include "platform/foundation/LogSink.h"

namespace platform {

/// Writes each record to the journal by its native protocol, so that a record is one entry whatever it
/// holds.
class JournalLogSink final : public LogSink {
 public:
  /// `processName` becomes the entries' SYSLOG_IDENTIFIER.
  explicit JournalLogSink(std::string_view processName);

  void write(std::string_view text) override;

  /// Whether this process' standard error is connected to the journal (systemd.exec(5), JOURNAL_STREAM).
  static bool isStandardErrorJournal();

 private:
  const std::string identifierField_;
};

}  // namespace platform
