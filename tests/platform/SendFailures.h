#pragma once

#include <initializer_list>
#include <vector>

namespace platform::test {

/// What the next calls of `send` and `sendmsg` in this program give, one after the other, for as
/// long as it lives: an errno value, or 0 for a call that goes through. On loopback the kernel
/// always has room, so a full socket cannot be had otherwise.
class SendFailures {
 public:
  SendFailures(std::initializer_list<int> results);
  ~SendFailures();
  SendFailures(const SendFailures&) = delete;
  SendFailures& operator=(const SendFailures&) = delete;
};

}  // namespace platform::test
