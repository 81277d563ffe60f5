#pragma once

#include <initializer_list>
#include <vector>

namespace platform::test {

/// What the next calls of `send` and `sendmsg` in this program give, one after the other, for as
/// long as it lives: an errno value, or 0 for a call that goes through. On loopback the kernel
/// always has room, so a full socket cannot be had otherwise.
class SocketFailures {
 public:
  SocketFailures(std::initializer_list<int> results);
  ~SocketFailures();
  SocketFailures(const SocketFailures&) = delete;
  SocketFailures& operator=(const SocketFailures&) = delete;
};

}  // namespace platform::test
