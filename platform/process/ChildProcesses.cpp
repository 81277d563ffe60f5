#include "platform/process/ChildProcesses.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <cerrno>
#include <csignal>
#include <memory>

#include "platform/dispatch/DispatchQueue.h"

namespace platform {

namespace {

// How often to look when a process can have no descriptor, since there are no more.
constexpr int kLookMilliseconds = 20;
constexpr double kLookAgainSeconds = 1;

using Descriptor = asio::posix::basic_stream_descriptor<asio::io_context::executor_type>;

/// A descriptor that is readable once the process has ended; none when the system has no more. The
/// C library's own declaration cannot be linked from C++ (glibc 2.36).
int openProcess(int processId) { return static_cast<int>(::syscall(SYS_pidfd_open, processId, 0)); }

}  // namespace

// Never destroyed: threads may wait in it until the very end.
ChildProcesses& ChildProcesses::shared() {
  static auto& processes = *new ChildProcesses;
  return processes;
}

ChildProcesses::ChildProcesses() : ending_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

int ChildProcesses::start(const std::function<int(int&)>& spawn, int& processId) {
  const std::lock_guard lock(mutex_);
  if (isEnding_) {
    return ECANCELED;
  }
  const int error = spawn(processId);
  if (error == 0) {
    running_.insert(processId);
  } else {
    processId = 0;
  }
  return error;
}

bool ChildProcesses::reapIfEnded(int processId) {
  const std::lock_guard lock(mutex_);
  int status = 0;
  if (::waitpid(processId, &status, WNOHANG) == 0) {
    return false;
  }
  running_.erase(processId);
  return true;
}

bool ChildProcesses::waitAndReap(int processId) {
  const FileDescriptor process(openProcess(processId));
  while (!reapIfEnded(processId)) {
    if (!waitUntilReadable(process.get())) {
      return false;
    }
  }
  return true;
}

void ChildProcesses::reapLater(int processId) {
  if (reapIfEnded(processId)) {
    return;
  }
  DispatchQueue::global().async([this, processId] {
    const auto process = std::make_shared<Descriptor>(DispatchQueue::global().context());
    asio::error_code error;
    process->assign(openProcess(processId), error);
    process->async_wait(Descriptor::wait_read, [this, process, processId](const asio::error_code&) {
      if (!reapIfEnded(processId)) {  // there was no descriptor to be had
        DispatchQueue::global().asyncAfter(kLookAgainSeconds,
                                           [this, processId] { reapLater(processId); });
      }
    });
  });
}

bool ChildProcesses::waitUntilReadable(int descriptor) const {
  std::array<pollfd, 2> waiting{{{descriptor, POLLIN, 0}, {ending_.get(), POLLIN, 0}}};
  const int timeout = descriptor < 0 ? kLookMilliseconds : -1;
  while (::poll(waiting.data(), waiting.size(), timeout) < 0 && errno == EINTR) {
  }
  return waiting[1].revents == 0;
}

void ChildProcesses::end() {
  const std::lock_guard lock(mutex_);
  isEnding_ = true;
  ::eventfd_write(ending_.get(), 1);
  for (const int processId : running_) {
    ::kill(-processId, SIGKILL);
  }
}

void ChildProcesses::beginAgain() {
  const std::lock_guard lock(mutex_);
  isEnding_ = false;
  eventfd_t ignored = 0;
  ::eventfd_read(ending_.get(), &ignored);
}

std::size_t ChildProcesses::count() const {
  const std::lock_guard lock(mutex_);
  return running_.size();
}

}  // namespace platform
