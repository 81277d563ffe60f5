#pragma once

#include <functional>
#include <initializer_list>
#include <memory>

namespace platform {

/// Delivers signals of the process as ordinary work of the main loop, for as long as it lives.
class SignalSource {
 public:
  /// Calls `handler` with the signal's number, inside the main loop, each time one of `signals`
  /// arrives.
  SignalSource(std::initializer_list<int> signals, std::function<void(int)> handler);
  ~SignalSource();
  SignalSource(const SignalSource&) = delete;
  SignalSource& operator=(const SignalSource&) = delete;

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace platform
