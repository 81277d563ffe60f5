#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "platform/dispatch/MainLoop.h"
#include "platform/foundation/Description.h"
#include "platform/process/ChildProcesses.h"
#include "platform/process/NSTask.h"

namespace platform {
namespace {

struct Finished {
  std::string output;
  std::string error;
};

/// Runs `commandLine` with standard output and error in one pipe.
Finished runShell(const std::string& commandLine, bool waits = true) {
  NSTask task;
  task.executablePath = "/bin/sh";
  task.arguments = {"-c", commandLine};
  task.standardOutput = task.standardError = std::make_shared<NSPipe>();
  if (const auto error = task.run()) {
    return {"", error->text()};
  }
  const auto output = task.standardOutput->readDataToEndOfFile();
  if (waits) {
    task.waitUntilExit();
  }
  return {std::string(textOf(output)), ""};
}

TEST(NSTaskTest, GivesWhatTheProgramPrints) {
  const std::pair<const char*, std::string> cases[] = {
      {"true", ""},
      {"printf a; printf b >&2; printf c", "abc"},
      {"exit 3", ""},
      {"printf 'a\\000b\\377'", {"a\0b\377", 4}},
      {"kill -9 $$", ""},
      {"head -c 200000 /dev/zero | tr '\\0' x", std::string(200000, 'x')},
      {"head -c 2000000 /dev/zero | tr '\\0' x", std::string(NSPipe::kMaxKept, 'x')},
      {"cat", ""},  // standard input is empty
      {"(sleep 0; printf late) & printf early; wait", "earlylate"},
  };
  for (const auto& [commandLine, expected] : cases) {
    const auto finished = runShell(commandLine);
    EXPECT_TRUE(finished.output == expected) << commandLine << ": " << finished.output.size();
    EXPECT_EQ(finished.error, "");
    EXPECT_EQ(ChildProcesses::shared().count(), 0U);
  }
}

TEST(NSTaskTest, PassesArgumentsAsTheyAre) {
  NSTask task;
  task.executablePath = "/usr/bin/printf";
  task.arguments = {"[%s]", "", "a b", "$HOME", "'\"\\", "\xff"};
  task.standardOutput = std::make_shared<NSPipe>();
  ASSERT_FALSE(task.run());
  EXPECT_EQ(textOf(task.standardOutput->readDataToEndOfFile()), "[][a b][$HOME]['\"\\][\xff]");
  task.waitUntilExit();
}

TEST(NSTaskTest, AProgramThatIsNotThereIsAnError) {
  NSTask task;
  task.executablePath = "/nowhere/zsh";
  task.standardOutput = std::make_shared<NSPipe>();
  EXPECT_EQ(description(task.run().value()),
            "cannot start /nowhere/zsh: No such file or directory");
  EXPECT_TRUE(task.standardOutput->readDataToEndOfFile().empty());
  task.waitUntilExit();
  task.executablePath = "/dev/null";
  EXPECT_EQ(description(task.run().value()), "cannot start /dev/null: Permission denied");
  EXPECT_EQ(ChildProcesses::shared().count(), 0U);
}

TEST(NSTaskTest, NoDescriptorOfOursLeaks) {
  const FileDescriptor inheritable(::fcntl(STDIN_FILENO, F_DUPFD, 50));
  const NSPipe other;
  ASSERT_TRUE(inheritable.isOpen() && other.isOpen());
  // The last is the folder that the shell looks into.
  EXPECT_EQ(runShell("cd /proc/self/fd && echo *").output, "0 1 2 3\n");
}

TEST(NSTaskTest, SignalsHaveTheirDefaultActions) {
  const auto former = ::signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(runShell("kill -PIPE $$; echo alive").output, "");
  ::signal(SIGPIPE, former);
}

TEST(NSTaskTest, NoSignalIsBlocked) {
  sigset_t blocked;
  sigset_t former;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &blocked, &former);
  EXPECT_EQ(runShell("kill -TERM $$; echo alive").output, "");
  ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

TEST(NSTaskTest, AChildThatLivesOnIsReapedWhenItEnds) {
  auto& children = ChildProcesses::shared();
  {
    NSTask task;
    task.executablePath = "/bin/sh";
    task.arguments = {"-c", "exec 1>&- 2>&-; kill -STOP $$"};
    task.standardOutput = std::make_shared<NSPipe>();
    ASSERT_FALSE(task.run());
    EXPECT_TRUE(task.standardOutput->readDataToEndOfFile().empty());
  }
  EXPECT_EQ(children.count(), 1U);
  MainLoop::shared().runReady();
  children.end();
  EXPECT_TRUE(MainLoop::shared().runUntil([&] { return children.count() == 0; }));
  children.beginAgain();
}

TEST(NSTaskTest, EndWakesWhoeverWaitsAndStartsNothingMore) {
  auto& children = ChildProcesses::shared();
  auto reader = std::async(std::launch::async, [] { return runShell("sleep 1000").error; });
  auto waiter = std::async(std::launch::async, [] {
    NSTask task;
    task.executablePath = "/bin/sleep";
    task.arguments = {"1000"};
    EXPECT_FALSE(task.run());
    task.waitUntilExit();
  });
  while (children.count() < 2) {
    std::this_thread::yield();
  }
  children.end();
  EXPECT_EQ(reader.get(), "");
  waiter.get();
  EXPECT_EQ(runShell("true").error, "cannot start /bin/sh: Operation canceled");
  EXPECT_TRUE(MainLoop::shared().runUntil([&] { return children.count() == 0; }));
  children.beginAgain();
  EXPECT_EQ(runShell("echo again").output, "again\n");
}

}  // namespace
}  // namespace platform
