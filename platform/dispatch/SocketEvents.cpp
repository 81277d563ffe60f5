#include "platform/dispatch/SocketEvents.h"

#include <sys/epoll.h>

#include <array>
#include <cerrno>

#include "platform/base/FileDescriptor.h"
#include "platform/dispatch/RunGuarded.h"

namespace platform {

namespace {

// What one turn of the loop handles at most; the rest comes with the next.
constexpr int kMaxEventsPerTurn = 256;

std::error_code lastError() { return {errno, std::generic_category()}; }

int createSet() {
  const int set = ::epoll_create1(EPOLL_CLOEXEC);
  if (set < 0) {
    throw std::system_error(lastError(), "epoll_create1");
  }
  return set;
}

std::uint64_t tagOf(int socket, std::uint32_t uses) {
  return std::uint64_t{uses} << 32 | static_cast<std::uint32_t>(socket);
}

std::uint32_t flagsOf(SocketInterest interest) {
  return (interest.reading ? static_cast<std::uint32_t>(EPOLLIN) : 0U) |
         (interest.writing ? static_cast<std::uint32_t>(EPOLLOUT) : 0U);
}

}  // namespace

SocketEvents::SocketEvents(asio::io_context& context, const std::atomic<bool>& isStopping)
    : isStopping_(isStopping), set_(context, createSet()) {
  wait();
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
  if (::epoll_ctl(set_.native_handle(), operation, socket, &event) != 0) {
    return lastError();
  }
  entry.watcher = &watcher;
  return {};
}

void SocketEvents::stopWatching(int socket) {
  ::epoll_ctl(set_.native_handle(), EPOLL_CTL_DEL, socket, nullptr);
  forget(socket);
}

void SocketEvents::forget(int socket) {
  entries_[static_cast<std::size_t>(socket)].watcher = nullptr;
}

void SocketEvents::wait() {
  set_.async_wait(decltype(set_)::wait_read, [this](const asio::error_code& error) {
    if (!error) {
      handOutEvents();
      wait();
    }
  });
}

void SocketEvents::handOutEvents() {
  static std::array<epoll_event, kMaxEventsPerTurn> events;
  const int count = ::epoll_wait(set_.native_handle(), events.data(), kMaxEventsPerTurn, 0);
  for (int i = 0; i < count; ++i) {
    const auto& event = events[static_cast<std::size_t>(i)];
    handOut(event.data.u64, event.events);
    if (isStopping_) {
      return;
    }
  }
}

void SocketEvents::handOut(std::uint64_t tag, std::uint32_t events) {
  const auto& entry = entries_[static_cast<std::uint32_t>(tag)];
  if (entry.watcher == nullptr || entry.uses != tag >> 32) {
    return;
  }
  const bool hasError = (events & (EPOLLERR | EPOLLHUP)) != 0;
  const bool canRead = hasError || (events & EPOLLIN) != 0;
  const bool canWrite = hasError || (events & EPOLLOUT) != 0;
  runGuarded(
      [watcher = entry.watcher, canRead, canWrite] { watcher->socketIsReady(canRead, canWrite); });
}

}  // namespace platform
