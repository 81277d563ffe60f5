#include "platform/log/HeldBackLines.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace platform {

struct HeldBackLines::Outcome {
  std::size_t written = 0;
  bool isFull = false;  // the descriptor may take the rest later
};

namespace {

constexpr int kSliceMilliseconds = 10;

// Waits until the descriptor takes more; time spent in vain is taken off `patience`, unless that is
// unlimited. A signal only makes the wait shorter.
bool waitForRoom(int descriptor, int& patience) {
  const bool isUnlimited = patience == HeldBackLines::kUnlimitedPatience;
  while (patience != 0) {
    pollfd waiting{descriptor, POLLOUT, 0};
    if (::poll(&waiting, 1, isUnlimited ? -1 : kSliceMilliseconds) > 0) {
      return true;
    }
    patience = isUnlimited ? patience : std::max(patience - kSliceMilliseconds, 0);
  }
  return false;
}

}  // namespace

// Writes as much of `text` as the descriptor takes. Safe in a signal handler.
HeldBackLines::Outcome HeldBackLines::writeTo(int descriptor, std::string_view text, int patience) {
  Outcome outcome;
  while (outcome.written < text.size() && !outcome.isFull) {
    const std::string_view rest = text.substr(outcome.written);
    const ssize_t count = ::write(descriptor, rest.data(), rest.size());
    if (count > 0) {
      outcome.written += static_cast<std::size_t>(count);
    } else if (count < 0 && errno == EAGAIN) {
      outcome.isFull = !waitForRoom(descriptor, patience);
    } else if (count == 0 || errno != EINTR) {
      break;
    }
  }
  return outcome;
}

HeldBackLines::HeldBackLines(int descriptor, int patience)
    : descriptor_(descriptor), patience_(patience), buffer_(std::make_unique<char[]>(kCapacity)) {}

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
  const Outcome outcome = writeTo(descriptor_, text, isBehind_ ? 0 : patience_);
  isBehind_ = outcome.isFull;
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
  writeTo(descriptor_, {buffer_.get(), size}, kPatience);
}

}  // namespace platform
