#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/Error.h"
#include "platform/process/NSPipe.h"

namespace platform {

/// A child process. It gets nothing of this process but the environment: of the descriptors only
/// its pipes (or the standard output and error of this process, where it has none) and /dev/null as
/// standard input; signals have their default actions; it leads a process group of its own.
class NSTask {
 public:
  NSTask() = default;
  /// A process that still runs goes on running; it is reaped when it has ended.
  ~NSTask();
  NSTask(const NSTask&) = delete;
  NSTask& operator=(const NSTask&) = delete;

  /// The program's path; nothing is searched for.
  std::string executablePath;
  /// What follows the program's own name.
  std::vector<std::string> arguments;
  /// May be one and the same pipe.
  std::shared_ptr<NSPipe> standardOutput;
  std::shared_ptr<NSPipe> standardError;

  /// Starts the process. The error says what is wrong: `cannot start /bin/zsh: No such file or
  /// directory`.
  std::optional<Error> run();

  /// Blocks until the process has ended, or child processes are ended (`ChildProcesses::end`).
  void waitUntilExit();

 private:
  int processId_ = 0;  // 0: none, or reaped
};

}  // namespace platform
