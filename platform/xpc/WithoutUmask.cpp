#include "platform/xpc/WithoutUmask.h"

#include <sys/eventfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "platform/foundation/FileDescriptor.h"

namespace platform {

namespace {

void waitForEnd(pid_t child) {
  while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
}

}  // namespace

// The outcome is no exit status: there is none where SIGCHLD is ignored.
int withoutUmask(const std::function<int()>& call) {
  const FileDescriptor outcome(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  const pid_t child = ::fork();
  if (child < 0) {
    return errno;
  }
  if (child == 0) {
    ::umask(0);
    ::eventfd_write(outcome.get(), 1 + static_cast<eventfd_t>(call()));
    ::_exit(0);
  }
  waitForEnd(child);
  eventfd_t value = 0;
  return ::eventfd_read(outcome.get(), &value) == 0 ? static_cast<int>(value - 1) : ECANCELED;
}

}  // namespace platform
