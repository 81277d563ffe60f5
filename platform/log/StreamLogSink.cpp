#include "platform/log/StreamLogSink.h"

#include <unistd.h>

#include <algorithm>
#include <ctime>

#include "platform/base/Clock.h"
#include "platform/log/LogEscape.h"

namespace platform {

namespace {

constexpr std::string_view kMilliseconds = "000 ";  // the digits are put in for each record
// How many more records of a handler show the time of the first.
constexpr int kRecordsToAReading = 16;
// A line buffer that one large record has grown beyond this is given back.
constexpr std::size_t kMaxKeptLine = HeldBackLines::kCapacity;

std::string dateText(std::int64_t second) {
  ::tzset();  // localtime_r alone would not see that the system's time zone changed
  const auto time = static_cast<std::time_t>(second);
  std::tm local{};
  ::localtime_r(&time, &local);
  char date[64];
  return {date, std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S.", &local)};
}

std::string escapedName(std::string_view name) {
  std::string out;
  appendEscaped(out, name);
  return out;
}

}  // namespace

StreamLogSink::StreamLogSink(int descriptor, std::string_view processName, int patience)
    : nameAndPid_(escapedName(processName) + "[" + std::to_string(::getpid()) + "] "),
      lines_(descriptor, patience) {}

StreamLogSink::~StreamLogSink() { flush(); }

void StreamLogSink::write(std::string_view text) {
  const std::lock_guard lock(mutex_);
  if (lines_.takeLoss()) {
    append(kLossText);
  }
  append(text);
  if (!LogBatch::isActive()) {
    lines_.write();
  }
}

void StreamLogSink::flush() {
  const std::lock_guard lock(mutex_);
  lines_.write();
}

void StreamLogSink::flushFromSignalHandler() noexcept { lines_.writeFromSignalHandler(); }

void StreamLogSink::append(std::string_view text) {
  if (!takeTimeOfHandler()) {
    updatePrefix();
  }
  line_.assign(prefix_);
  appendEscaped(line_, text);
  line_.push_back('\n');
  lines_.append(line_);
  if (line_.capacity() > kMaxKeptLine) {
    line_ = {};
  }
}

/// Counts a record in. False when the prefix is to show the time anew: that of another handler, or
/// of one that takes long.
bool StreamLogSink::takeTimeOfHandler() {
  const auto handler = LogBatch::isActive() ? LogBatch::handler() : kNoHandler;
  if (handler != kNoHandler && handler == handler_ && recordsLeft_ > 0) {
    --recordsLeft_;
    return true;
  }
  handler_ = handler;
  recordsLeft_ = kRecordsToAReading;
  return false;
}

void StreamLogSink::updatePrefix() {
  const std::int64_t now =
      std::max<std::int64_t>(Clock::shared().microsecondsSince1970() / 1000, 0);
  if (now == prefixTime_) {
    return;
  }
  if (now / 1000 != prefixTime_ / 1000) {
    prefix_ = dateText(now / 1000).append(kMilliseconds).append(nameAndPid_);
  }
  prefixTime_ = now;
  const auto millisecond = static_cast<int>(now % 1000);
  char* const digits = prefix_.data() + prefix_.size() - nameAndPid_.size() - kMilliseconds.size();
  digits[0] = static_cast<char>('0' + millisecond / 100);
  digits[1] = static_cast<char>('0' + millisecond / 10 % 10);
  digits[2] = static_cast<char>('0' + millisecond % 10);
}

}  // namespace platform
