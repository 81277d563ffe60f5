#include "platform/foundation/HeldBackLines.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace platform {

struct HeldBackLines::Outcome {
  std::size_t written = 0;
  bool isFull = false;  // the descriptor may take the rest later
};

namespace {

// A tenth of a second in all; counted, so that no clock is needed.
constexpr int kMaxWaits = 10;
constexpr int kWaitMilliseconds = 10;

void waitForRoom(int descriptor) {
  pollfd waiting{descriptor, POLLOUT, 0};
  ::poll(&waiting, 1, kWaitMilliseconds);
}

}  // namespace

// Writes as much of `text` as the descriptor takes, waiting at most `waits` times for room. Safe in
// a signal handler.
HeldBackLines::Outcome HeldBackLines::writeTo(int descriptor, std::string_view text, int waits) {
  Outcome outcome;
  while (outcome.written < text.size()) {
    const std::string_view rest = text.substr(outcome.written);
    const ssize_t count = ::write(descriptor, rest.data(), rest.size());
    if (count > 0) {
      outcome.written += static_cast<std::size_t>(count);
    } else if (count < 0 && errno == EAGAIN) {
      if (waits-- <= 0) {
        outcome.isFull = true;
        break;
      }
      waitForRoom(descriptor);
    } else if (count == 0 || errno != EINTR) {
      break;
    }
  }
  return outcome;
}

HeldBackLines::HeldBackLines(int descriptor)
    : descriptor_(descriptor), buffer_(std::make_unique<char[]>(kCapacity)) {}

void HeldBackLines::append(std::string_view line) {
  if (line.size() > kCapacity - size_) {
    write();
  }
  if (line.size() <= kCapacity - size_) {
    hold(line);
  } else if (size_ == 0) {
    writeOversized(line);
  } else {
    hasLoss_ = true;
  }
}

void HeldBackLines::hold(std::string_view text) {
  const std::size_t size = size_.load(std::memory_order_relaxed);
  std::memcpy(buffer_.get() + size, text.data(), text.size());
  size_.store(size + text.size(), std::memory_order_release);
}

HeldBackLines::Outcome HeldBackLines::writeNow(std::string_view text) {
  const Outcome outcome = writeTo(descriptor_, text, isReaderStuck_ ? 0 : kMaxWaits);
  isReaderStuck_ = outcome.isFull && outcome.written == 0;
  if (outcome.written > 0) {
    isLineOpen_ = text[outcome.written - 1] != '\n';
  }
  return outcome;
}

void HeldBackLines::write() {
  const std::string_view held(buffer_.get(), size_);
  const Outcome outcome = writeNow(held);
  const std::string_view rest = held.substr(outcome.written);
  if (outcome.isFull) {
    size_ = 0;  // a signal handler finds nothing while the bytes move
    std::memmove(buffer_.get(), rest.data(), rest.size());
    size_ = rest.size();
  } else if (!rest.empty()) {
    dropAll();
  } else {
    size_ = 0;
  }
}

void HeldBackLines::writeOversized(std::string_view line) {
  if (writeNow(line).written < line.size()) {
    dropAll();
  }
}

void HeldBackLines::dropAll() {
  size_ = 0;
  hasLoss_ = true;
  if (isLineOpen_) {
    hold("\n");
  }
}

bool HeldBackLines::takeLoss() { return std::exchange(hasLoss_, false); }

void HeldBackLines::writeFromSignalHandler() noexcept {
  const std::size_t size = size_.exchange(0);
  writeTo(descriptor_, {buffer_.get(), size}, kMaxWaits);
}

}  // namespace platform
