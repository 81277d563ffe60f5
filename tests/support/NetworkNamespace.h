#pragma once

#include <memory>
#include <string>

#include "platform/base/FileDescriptor.h"

namespace quillet::test {

/// A network of the test's own, where every port is free: loopback is up, nothing else is there.
/// The thread that entered it, and those that this one starts, are in it while this lives.
class NetworkNamespace {
 public:
  /// Absent when the system does not let this process have one (it takes CAP_SYS_ADMIN).
  static std::unique_ptr<NetworkNamespace> enter();

  ~NetworkNamespace();
  NetworkNamespace(const NetworkNamespace&) = delete;
  NetworkNamespace& operator=(const NetworkNamespace&) = delete;

  /// Runs `ip ARGUMENTS` in it. False when that fails.
  static bool ip(const std::string& arguments);

 private:
  explicit NetworkNamespace(platform::FileDescriptor before) : before_(std::move(before)) {}

  platform::FileDescriptor before_;
};

}  // namespace quillet::test
