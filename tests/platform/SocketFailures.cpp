#include "tests/platform/SocketFailures.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform::test {

std::deque<int> SocketFailures::toCome;

bool SocketFailures::next() {
  if (toCome.empty()) {
    return false;
  }
  const int result = toCome.front();
  toCome.pop_front();
  errno = result != 0 ? result : errno;
  return result != 0;
}

}  // namespace platform::test

namespace {

/// The system call itself, unless it is to fail.
template <class... Arguments>
auto call(long number, Arguments... arguments) {
  return platform::test::SocketFailures::next() ? -1L : ::syscall(number, arguments...);
}

}  // namespace

// A program's own functions come before those of the C library.
extern "C" {

ssize_t send(int socket, const void* bytes, size_t size, int flags) {
  return call(SYS_sendto, socket, bytes, size, flags, nullptr, 0);
}
ssize_t sendmsg(int socket, const msghdr* message, int flags) {
  return call(SYS_sendmsg, socket, message, flags);
}
int sendmmsg(int socket, mmsghdr* messages, unsigned int count, int flags) {
  return static_cast<int>(call(SYS_sendmmsg, socket, messages, count, flags));
}
int accept4(int socket, sockaddr* address, socklen_t* size, int flags) {
  return static_cast<int>(call(SYS_accept4, socket, address, size, flags));
}
int recvmmsg(int socket, mmsghdr* messages, unsigned int count, int flags, timespec* timeout) {
  return static_cast<int>(call(SYS_recvmmsg, socket, messages, count, flags, timeout));
}

}  // extern "C"
