#include "platform/log/NSLog.h"

#include "platform/log/LogSink.h"

namespace platform::detail {

namespace {

// One large record must not hold its memory for ever.
constexpr std::size_t kMaxKeptCapacity = 64UL * 1024;

// Whether the thread's text below is destroyed; what runs while a thread ends may still log.
thread_local bool isTextGone = false;

struct KeptText {
  KeptText() = default;
  KeptText(const KeptText&) = delete;
  KeptText& operator=(const KeptText&) = delete;
  ~KeptText() { isTextGone = true; }

  std::string text;
};

KeptText& keptText() {
  thread_local KeptText kept;
  return kept;
}

}  // namespace

std::string takeLogText() {
  // Moved out while it is in use: describing a piece may itself write a record.
  std::string text = isTextGone ? std::string() : std::move(keptText().text);
  text.clear();
  return text;
}

void writeLogText(std::string text) {
  if (text.size() > kMaxDescription) {
    text.resize(kMaxDescription);
    text.append("... (cut here)");
  }
  LogSink::shared().write(text);
  if (!isTextGone && text.capacity() <= kMaxKeptCapacity) {
    keptText().text = std::move(text);
  }
}

}  // namespace platform::detail
