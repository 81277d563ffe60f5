#include "tests/platform/SocketFailures.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

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

using platform::test::SocketFailures;

// A program's own functions come before those of the C library.
extern "C" {

ssize_t send(int socket, const void* bytes, size_t size, int flags) {
  return SocketFailures::next() ? -1
                                : ::syscall(SYS_sendto, socket, bytes, size, flags, nullptr, 0);
}

ssize_t sendmsg(int socket, const msghdr* message, int flags) {
  return SocketFailures::next() ? -1 : ::syscall(SYS_sendmsg, socket, message, flags);
}

int sendmmsg(int socket, mmsghdr* messages, unsigned int count, int flags) {
  return SocketFailures::next()
             ? -1
             : static_cast<int>(::syscall(SYS_sendmmsg, socket, messages, count, flags));
}

int accept4(int socket, sockaddr* address, socklen_t* size, int flags) {
  return SocketFailures::next()
             ? -1
             : static_cast<int>(::syscall(SYS_accept4, socket, address, size, flags));
}

int recvmmsg(int socket, mmsghdr* messages, unsigned int count, int flags, timespec* timeout) {
  return SocketFailures::next()
             ? -1
             : static_cast<int>(::syscall(SYS_recvmmsg, socket, messages, count, flags, timeout));
}

}  // extern "C"
