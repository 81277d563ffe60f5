#pragma once

#include <fcntl.h>
#include <sched.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/base/FileDescriptor.h"

namespace quillet::test {

/// A network of the test's own, where every port is free: loopback is up, nothing else is there.
/// The thread that entered it, and those that this one starts, are in it while this lives.
class NetworkNamespace {
 public:
  /// With what `ip` makes of each of `setup`. Absent when the system does not let this process have
  /// one (it takes CAP_SYS_ADMIN), or not that.
  static std::unique_ptr<NetworkNamespace> enter(const std::vector<std::string>& setup) {
    platform::FileDescriptor before(::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC));
    if (!before.isOpen() || ::unshare(CLONE_NEWNET) != 0) {
      return nullptr;
    }
    std::unique_ptr<NetworkNamespace> entered(new NetworkNamespace(std::move(before)));
    return ip("link set lo up") && std::ranges::all_of(setup, ip) ? std::move(entered) : nullptr;
  }
  ~NetworkNamespace() { ::setns(before_.get(), CLONE_NEWNET); }
  NetworkNamespace(const NetworkNamespace&) = delete;
  NetworkNamespace& operator=(const NetworkNamespace&) = delete;

  /// Runs `ip ARGUMENTS` in it. False when that fails.
  static bool ip(const std::string& arguments) {
    return std::system(("ip " + arguments + " >/dev/null 2>&1").c_str()) == 0;
  }

 private:
  explicit NetworkNamespace(platform::FileDescriptor before) : before_(std::move(before)) {}

  const platform::FileDescriptor before_;
};

}  // namespace quillet::test
