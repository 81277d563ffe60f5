#pragma once

#include <functional>
#include <mutex>
#include <set>

#include "platform/base/FileDescriptor.h"

namespace platform {

/// The child processes of this process, from their start until they are reaped: so that none stays
/// as a zombie, and all of them can be ended. Any thread may call it.
class ChildProcesses {
 public:
  static ChildProcesses& shared();

  ChildProcesses(const ChildProcesses&) = delete;
  ChildProcesses& operator=(const ChildProcesses&) = delete;

  /// Calls `spawn` for a process id or an errno value, which it returns; ECANCELED after `end`.
  int start(const std::function<int(int&)>& spawn, int& processId);

  /// Blocks until the process has ended; false when `end` came first.
  bool waitAndReap(int processId);
  /// Reaps it on the main loop once it has ended.
  void reapLater(int processId);

  /// Blocks until something can be read from `descriptor`, or it is at its end; false when `end`
  /// came first.
  [[nodiscard]] bool waitUntilReadable(int descriptor) const;

  /// Kills all of them with their process groups and wakes whoever waits for them. None is started
  /// any more: for the end of this process.
  void end();
  /// For tests: they may be started again.
  void beginAgain();

  /// How many are not reaped.
  [[nodiscard]] std::size_t count() const;

 private:
  ChildProcesses();
  ~ChildProcesses() = default;

  [[nodiscard]] bool reapIfEnded(int processId);

  mutable std::mutex mutex_;
  std::set<int> running_;        // guarded by mutex_: their ids are not given to others meanwhile
  bool isEnding_ = false;        // guarded by mutex_
  const FileDescriptor ending_;  // readable from `end` on
};

}  // namespace platform
