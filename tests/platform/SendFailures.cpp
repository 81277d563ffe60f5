#include "tests/platform/SendFailures.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <deque>

namespace platform::test {

namespace {

std::deque<int>& results() {
  static std::deque<int> results;
  return results;
}

// The errno value that this call is to give.
int nextResult() {
  if (results().empty()) {
    return 0;
  }
  const int result = results().front();
  results().pop_front();
  return result;
}

}  // namespace

SendFailures::SendFailures(std::initializer_list<int> results) { test::results().assign(results); }

SendFailures::~SendFailures() { results().clear(); }

namespace detail {

bool fails() {
  const int result = nextResult();
  errno = result != 0 ? result : errno;
  return result != 0;
}

}  // namespace detail

}  // namespace platform::test

// A program's own functions come before those of the C library.
extern "C" {

ssize_t send(int socket, const void* bytes, size_t size, int flags) {
  return platform::test::detail::fails()
             ? -1
             : ::syscall(SYS_sendto, socket, bytes, size, flags, nullptr, 0);
}

ssize_t sendmsg(int socket, const msghdr* message, int flags) {
  return platform::test::detail::fails() ? -1 : ::syscall(SYS_sendmsg, socket, message, flags);
}

}  // extern "C"
