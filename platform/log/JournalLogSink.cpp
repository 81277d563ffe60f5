#include "platform/log/JournalLogSink.h"

// The place in the source would always be this file.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <sys/stat.h>
#include <sys/uio.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>

#include "platform/base/WholeNumber.h"

namespace platform {

namespace {

constexpr std::string_view kMessage = "MESSAGE=";
// There are no levels; this one is what the journal gives to lines of standard error.
constexpr std::string_view kPriorityField = "PRIORITY=6";

iovec fieldOf(std::string_view text) {
  return {const_cast<char*>(text.data()), text.size()};  // only read, the type is C's
}

}  // namespace

JournalLogSink::JournalLogSink(std::string_view processName)
    : identifierField_("SYSLOG_IDENTIFIER=" + std::string(processName)) {}

void JournalLogSink::write(std::string_view text) {
  std::string message;
  message.reserve(kMessage.size() + text.size());
  message.append(kMessage).append(text);
  const std::array fields{fieldOf(message), fieldOf(kPriorityField), fieldOf(identifierField_)};
  ::sd_journal_sendv(fields.data(), static_cast<int>(fields.size()));
}

bool JournalLogSink::isStandardErrorJournal() {
  const char* const variable = std::getenv("JOURNAL_STREAM");
  const std::string_view stream = variable != nullptr ? variable : "";
  const std::size_t colon = stream.find(':');
  if (colon == std::string_view::npos) {
    return false;
  }
  const auto device = wholeNumber<std::uint64_t>(stream.substr(0, colon));
  const auto inode = wholeNumber<std::uint64_t>(stream.substr(colon + 1));
  struct stat status {};
  return ::fstat(STDERR_FILENO, &status) == 0 && device == status.st_dev && inode == status.st_ino;
}

}  // namespace platform
