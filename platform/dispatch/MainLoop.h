#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace platform {

class Deadlines;
class SocketEvents;

/// The process' event loop. Its handlers run one at a time, each to its end, on the thread that
/// runs it. A handler that throws is one log line; the loop goes on.
class MainLoop {
 public:
  static MainLoop& shared();

  MainLoop(const MainLoop&) = delete;
  MainLoop& operator=(const MainLoop&) = delete;

  /// Runs handlers until `stop`; the process has one loop and runs it once at a time. The log
  /// records of one iteration are written together, before the loop waits again.
  void run();

  /// Ends `run` after the handler that is running, however much is waiting; the next `run` when
  /// none is running. Any thread may call it.
  void stop();

  /// For tests: runs handlers until `done` gives true; gives up and returns false after `seconds`
  /// of the system's own time.
  bool runUntil(const std::function<bool()>& done, double seconds = 10);

  /// For tests: runs what is ready now, waits for nothing.
  void runReady();

  /// Another number in each iteration.
  [[nodiscard]] std::uint64_t iteration() const;

  /// What waits for its time (`DispatchQueue::asyncAfter`, `Timer`).
  Deadlines& deadlines();

  /// What the platform's own sockets are watched with (`WatchedSocket`).
  SocketEvents& socketEvents();

 private:
  friend class DispatchQueue;
  struct State;

  MainLoop();
  ~MainLoop();

  void give(std::function<void()> work);

  std::unique_ptr<State> state_;
};

}  // namespace platform
