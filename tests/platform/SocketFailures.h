#pragma once

#include <cerrno>
#include <deque>
#include <utility>

namespace platform::test {

/// What the next calls of `send`, `sendmsg`, `sendmmsg`, `recvmmsg` and `accept4` in this program
/// give, one after the other, for as long as it lives: an errno value, or 0 for a call that goes
/// through. On loopback the kernel always has room, so a full socket cannot be had otherwise.
class SocketFailures {
 public:
  explicit SocketFailures(std::deque<int> results) { toCome = std::move(results); }
  ~SocketFailures() { toCome.clear(); }
  SocketFailures(const SocketFailures&) = delete;
  SocketFailures& operator=(const SocketFailures&) = delete;

  /// Whether this call fails; if so, `errno` says why.
  static bool next();

 private:
  static std::deque<int> toCome;
};

}  // namespace platform::test
