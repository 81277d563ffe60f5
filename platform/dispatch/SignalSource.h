#pragma once

#include <functional>
#include <initializer_list>
#include <memory>

namespace platform {

/// Delivers signals of the process as ordinary work of the main loop, for as long as it lives. One
/// source a signal. To be made before the process has other threads: the signals are blocked from
/// then on, afterwards too, so that one that comes late does not end a process that is ending, and
/// are inherited so by threads and child processes.
class SignalSource {
 public:
  /// Calls `handler` with the signal's number, inside the main loop, each time one of `signals`
  /// arrives. Throws `std::system_error` when the process has no descriptor left.
  SignalSource(std::initializer_list<int> signals, std::function<void(int)> handler);
  ~SignalSource();
  SignalSource(const SignalSource&) = delete;
  SignalSource& operator=(const SignalSource&) = delete;

 private:
  class Descriptor;
  std::shared_ptr<Descriptor> descriptor_;
};

}  // namespace platform
