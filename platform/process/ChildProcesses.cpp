#include "platform/process/ChildProcesses.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <memory>
#include <utility>

#include "platform/dispatch/WatchedSocket.h"

namespace platform {

namespace {

// How often to look when a process can have no descriptor, since there are no more.
constexpr int kLookMilliseconds = 20;
constexpr double kLookAgainSeconds = 1;

/// A descriptor that is readable once the process has ended; none when the system has no more. The
/// C library's own declaration cannot be linked from C++ (glibc 2.36).
int openProcess(int processId) { return static_cast<int>(::syscall(SYS_pidfd_open, processId, 0)); }

/// Runs work on the main loop once a process has ended, or after a while where it can have no
/// descriptor. Keeps itself until then.
class EndOfProcess final : private SocketWatcher {
 public:
  static void then(int processId, const std::function<void()>& work) {
    const std::shared_ptr<EndOfProcess> self(new EndOfProcess);
    self->process_.open(FileDescriptor(openProcess(processId)));
    if (self->process_.watch(*self, {true, false})) {
      DispatchQueue::global().asyncAfter(kLookAgainSeconds, work);
    } else {
      self->work_ = [self, work] { work(); };
    }
  }
  virtual ~EndOfProcess() = default;

 private:
  void socketIsReady(bool /*canRead*/, bool /*canWrite*/) override {
    const auto work = std::exchange(work_, nullptr);  // owns this
    process_.close();
    work();
  }

  WatchedSocket process_;
  std::function<void()> work_;
};

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
    EndOfProcess::then(processId, [this, processId] { reapLater(processId); });
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
