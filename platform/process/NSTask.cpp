#include "platform/process/NSTask.h"

#include <spawn.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>

#include "platform/process/ChildProcesses.h"

namespace platform {

namespace {

/// The descriptors that the child begins with.
class FileActions {
 public:
  FileActions(const NSPipe* output, const NSPipe* error) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", 0, 0);
    pass(output, STDOUT_FILENO);
    pass(error, STDERR_FILENO);
    ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
  }
  ~FileActions() { ::posix_spawn_file_actions_destroy(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;

  [[nodiscard]] const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  void pass(const NSPipe* pipe, int as) {
    if (pipe != nullptr) {
      ::posix_spawn_file_actions_adddup2(&actions_, pipe->writing().get(), as);
    }
  }

  posix_spawn_file_actions_t actions_{};
};

class Attributes {
 public:
  Attributes() {
    ::posix_spawnattr_init(&attributes_);
    sigset_t signals;
    ::sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes_, &signals);
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes_, &signals);
    ::posix_spawnattr_setpgroup(&attributes_, 0);
    ::posix_spawnattr_setflags(
        &attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
  }
  ~Attributes() { ::posix_spawnattr_destroy(&attributes_); }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;

  [[nodiscard]] const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_{};
};

std::vector<char*> argumentVector(std::string& path, std::vector<std::string>& arguments) {
  std::vector<char*> vector{path.data()};
  for (auto& argument : arguments) {
    vector.push_back(argument.data());
  }
  vector.push_back(nullptr);
  return vector;
}

}  // namespace

NSTask::~NSTask() {
  if (processId_ != 0) {
    ChildProcesses::shared().reapLater(processId_);
  }
}

std::optional<Error> NSTask::run() {
  const FileActions actions(standardOutput.get(), standardError.get());
  const Attributes attributes;
  const auto vector = argumentVector(executablePath, arguments);
  const bool hasPipes =
      (!standardOutput || standardOutput->isOpen()) && (!standardError || standardError->isOpen());
  const int error =
      !hasPipes ? EMFILE
                : ChildProcesses::shared().start(
                      [&](int& processId) {
                        return ::posix_spawn(&processId, executablePath.c_str(), actions.get(),
                                             attributes.get(), vector.data(), environ);
                      },
                      processId_);
  for (const auto& pipe : {standardOutput, standardError}) {
    if (pipe) {
      pipe->closeWriting();
    }
  }
  if (error != 0) {
    return Error("cannot start " + executablePath + ": " + ::strerrordesc_np(error));
  }
  return std::nullopt;
}

void NSTask::waitUntilExit() {
  if (processId_ != 0 && ChildProcesses::shared().waitAndReap(processId_)) {
    processId_ = 0;
  }
}

}  // namespace platform
