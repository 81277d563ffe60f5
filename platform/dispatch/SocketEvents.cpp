#include "platform/dispatch/SocketEvents.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <limits>

#include "platform/base/SystemError.h"
#include "platform/dispatch/RunGuarded.h"
#include "platform/log/LogSink.h"

namespace platform {

namespace {

constexpr std::uint64_t kWakerTag = std::numeric_limits<std::uint64_t>::max();

int required(int descriptor) {
  if (descriptor < 0) {
    throw std::system_error(lastError(), "event loop");
  }
  return descriptor;
}

std::uint64_t tagOf(int socket, std::uint32_t uses) {
  return std::uint64_t{uses} << 32 | static_cast<std::uint32_t>(socket);
}

std::uint32_t flagsOf(SocketInterest interest) {
  return (interest.reading ? static_cast<std::uint32_t>(EPOLLIN) : 0U) |
         (interest.writing ? static_cast<std::uint32_t>(EPOLLOUT) : 0U);
}

}  // namespace

// Each write to the waker is an edge, so nobody has to read it.
SocketEvents::SocketEvents(const std::atomic<bool>& isStopping)
    : isStopping_(isStopping),
      set_(required(::epoll_create1(EPOLL_CLOEXEC))),
      waker_(required(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))) {
  epoll_event event{};
  event.events = EPOLLIN | EPOLLET;
  event.data.u64 = kWakerTag;
  required(::epoll_ctl(set_.get(), EPOLL_CTL_ADD, waker_.get(), &event));
}

std::error_code SocketEvents::watch(int socket, SocketWatcher& watcher, SocketInterest interest,
                                    bool isKnown) {
  const auto index = static_cast<std::size_t>(socket);
  if (index >= entries_.size()) {
    entries_.resize(index + 1);
  }
  auto& entry = entries_[index];
  if (!isKnown) {
    ++entry.uses;
  }
  epoll_event event{};
  event.events = flagsOf(interest);
  event.data.u64 = tagOf(socket, entry.uses);
  const int operation = isKnown ? EPOLL_CTL_MOD : EPOLL_CTL_ADD;
  if (::epoll_ctl(set_.get(), operation, socket, &event) != 0) {
    return lastError();
  }
  entry.watcher = &watcher;
  return {};
}

void SocketEvents::stopWatching(int socket) {
  ::epoll_ctl(set_.get(), EPOLL_CTL_DEL, socket, nullptr);
  forget(socket);
}

void SocketEvents::forget(int socket) {
  entries_[static_cast<std::size_t>(socket)].watcher = nullptr;
}

void SocketEvents::wake() { ::eventfd_write(waker_.get(), 1); }

bool SocketEvents::wait(std::chrono::nanoseconds longest) {
  using Milliseconds = std::chrono::duration<int, std::milli>;
  const auto bounded = std::min<std::chrono::nanoseconds>(longest, Milliseconds::max());
  const auto timeout = std::chrono::ceil<Milliseconds>(bounded).count();
  const int count = ::epoll_wait(set_.get(), events_.data(), kMaxEvents, timeout);
  count_ = static_cast<std::size_t>(std::max(count, 0));
  return count_ > 0;
}

void SocketEvents::handOut() {
  for (std::size_t i = 0; i < count_ && !isStopping_; ++i) {
    handOut(events_[i].data.u64, events_[i].events);
  }
}

void SocketEvents::handOut(std::uint64_t tag, std::uint32_t events) {
  if (tag == kWakerTag) {
    return;
  }
  const auto& entry = entries_[static_cast<std::uint32_t>(tag)];
  if (entry.watcher == nullptr || entry.uses != tag >> 32) {
    return;
  }
  const bool hasError = (events & (EPOLLERR | EPOLLHUP)) != 0;
  const bool canRead = hasError || (events & EPOLLIN) != 0;
  const bool canWrite = hasError || (events & EPOLLOUT) != 0;
  LogBatch::beginHandler();
  runGuarded(
      [watcher = entry.watcher, canRead, canWrite] { watcher->socketIsReady(canRead, canWrite); });
}

}  // namespace platform
