#include "tests/support/NetworkNamespace.h"

#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace quillet::test {

namespace {

using platform::FileDescriptor;

void switchLoopbackOn() {
  const FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  ifreq request{};
  std::strcpy(request.ifr_name, "lo");
  request.ifr_flags = IFF_UP;
  if (::ioctl(socket.get(), SIOCSIFFLAGS, &request) != 0) {
    throw std::runtime_error("cannot switch the test's loopback on");
  }
}

}  // namespace

std::unique_ptr<NetworkNamespace> NetworkNamespace::enter() {
  FileDescriptor before(::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC));
  if (!before.isOpen() || ::unshare(CLONE_NEWNET) != 0) {
    return nullptr;
  }
  std::unique_ptr<NetworkNamespace> entered(new NetworkNamespace(std::move(before)));
  switchLoopbackOn();
  return entered;
}

NetworkNamespace::~NetworkNamespace() { ::setns(before_.get(), CLONE_NEWNET); }

bool NetworkNamespace::ip(const std::string& arguments) {
  return std::system(("ip " + arguments + " >/dev/null 2>&1").c_str()) == 0;
}

}  // namespace quillet::test
