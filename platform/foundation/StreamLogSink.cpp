#include "platform/foundation/StreamLogSink.h"

#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "platform/foundation/Clock.h"
#include "platform/foundation/Utf8.h"

namespace platform {

namespace {

// Enough for the records of a few queries; a larger batch is written in several pieces.
constexpr std::size_t kFlushSize = 64 * 1024;

bool isPlain(std::string_view text) {
  // No early exit, so that the compiler can look at many bytes at once.
  bool special = false;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    special |= byte < 0x20 || byte >= 0x7F;
  }
  return !special;
}

void appendByteEscape(std::string& out, unsigned char byte) {
  constexpr char kHex[] = "0123456789ABCDEF";
  out.append("\\x");
  out.push_back(kHex[byte >> 4]);
  out.push_back(kHex[byte & 0xF]);
}

}  // namespace

void appendEscaped(std::string& out, std::string_view text) {
  if (isPlain(text)) {
    out.append(text);
    return;
  }
  while (!text.empty()) {
    const std::size_t length = utf8SequenceLength(text);
    const auto first = static_cast<unsigned char>(text.front());
    const bool control = length == 1 ? first < 0x20 || first == 0x7F
                                     : length == 2 && first == 0xC2 &&
                                           static_cast<unsigned char>(text[1]) < 0xA0;
    const std::size_t taken = length == 0 ? 1 : length;
    if (first == '\n') {
      out.append("\\n");
    } else if (length == 0 || control) {
      for (const char c : text.substr(0, taken)) {
        appendByteEscape(out, static_cast<unsigned char>(c));
      }
    } else {
      out.append(text.substr(0, taken));
    }
    text.remove_prefix(taken);
  }
}

StreamLogSink::StreamLogSink(int descriptor, std::string_view processName)
    : descriptor_(descriptor),
      nameAndPid_(std::string(processName) + "[" + std::to_string(::getpid()) + "] ") {}

StreamLogSink::~StreamLogSink() { flush(); }

void StreamLogSink::write(std::string_view text) {
  const std::lock_guard lock(mutex_);
  appendPrefix();
  appendEscaped(lines_, text);
  lines_.push_back('\n');
  if (!LogBatch::isActive() || lines_.size() >= kFlushSize) {
    flushLocked();
  }
}

void StreamLogSink::flush() {
  const std::lock_guard lock(mutex_);
  flushLocked();
}

void StreamLogSink::appendPrefix() {
  const std::int64_t now = Clock::shared().microsecondsSince1970();
  const std::int64_t second = now / 1'000'000;
  if (second != prefixSecond_) {
    const auto time = static_cast<std::time_t>(second);
    std::tm local{};
    ::localtime_r(&time, &local);
    char date[32];
    datePrefix_.assign(date, std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S.", &local));
    prefixSecond_ = second;
  }
  const auto millisecond = static_cast<int>(now / 1000 % 1000);
  const char digits[] = {static_cast<char>('0' + millisecond / 100),
                         static_cast<char>('0' + millisecond / 10 % 10),
                         static_cast<char>('0' + millisecond % 10), ' '};
  lines_.append(datePrefix_);
  lines_.append(digits, sizeof digits);
  lines_.append(nameAndPid_);
}

void StreamLogSink::flushLocked() {
  std::string_view rest = lines_;
  while (!rest.empty()) {
    const ssize_t written = ::write(descriptor_, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written <= 0) {
      break;  // nobody reads the log any more, or the disk is full: the records are lost
    }
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  lines_.clear();
}

}  // namespace platform
