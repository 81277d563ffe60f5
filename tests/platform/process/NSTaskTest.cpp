#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <latch>
#include <thread>

#include "platform/process/ChildProcesses.h"
#include "platform/process/NSTask.h"
#include "tests/platform/Test.h"

namespace platform::test {

/// What a shell prints to standard output and error, or why it cannot be started.
std::string run(const std::string& commandLine, const char* shell = "/bin/sh") {
  NSTask task;
  task.executablePath = shell;
  task.arguments = {"-c", commandLine};
  task.standardOutput = task.standardError = std::make_shared<NSPipe>();
  const auto error = task.run();
  const auto output = task.standardOutput->readDataToEndOfFile();
  task.waitUntilExit();
  return error ? error->text() : std::string(textOf(output));
}

TEST(NSTaskTest, GivesWhatTheProgramPrints) {
  EXPECT_EQ(run("printf 'a\\000b\\377'; printf c >&2; exit 3"), std::string("a\0b\377c", 5));
  EXPECT_TRUE(run("head -c 2000000 /dev/zero | tr '\\0' x") == std::string(NSPipe::kMaxKept, 'x'));
  EXPECT_EQ(run("cat"), "") << "standard input is empty";
  EXPECT_EQ(ChildProcesses::shared().count(), 0U);
  EXPECT_EQ(run("", "/dev/null"), "cannot start /dev/null: Permission denied");
}

TEST(NSTaskTest, LetsNothingOfOursReachTheChild) {
  const FileDescriptor inheritable(::fcntl(STDIN_FILENO, F_DUPFD, 50));
  const NSPipe other;
  // The last is the folder that the shell looks into.
  EXPECT_EQ(run("cd /proc/self/fd && echo *"), "0 1 2 3\n");

  const auto former = ::signal(SIGPIPE, SIG_IGN);
  sigset_t blocked;
  sigset_t formerlyBlocked;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &blocked, &formerlyBlocked);
  EXPECT_EQ(run("kill -PIPE $$; echo alive"), "");
  EXPECT_EQ(run("kill -TERM $$; echo alive"), "");
  ::pthread_sigmask(SIG_SETMASK, &formerlyBlocked, nullptr);
  ::signal(SIGPIPE, former);
}

TEST(NSTaskTest, AtTheEndWakesWhoeverWaitsAndStartsNothingMore) {
  auto& children = ChildProcesses::shared();
  std::latch started(2);
  const auto sleep = [&](bool isRead) {
    NSTask task;
    task.executablePath = "/bin/sleep";
    task.arguments = {"1000"};
    task.standardOutput = std::make_shared<NSPipe>();
    EXPECT_FALSE(task.run());
    started.count_down();
    EXPECT_TRUE(!isRead || task.standardOutput->readDataToEndOfFile().empty());
    task.waitUntilExit();
  };
  {
    const std::jthread reader(sleep, true);
    const std::jthread waiter(sleep, false);
    started.wait();
    children.end();
  }
  EXPECT_EQ(run("true"), "cannot start /bin/sh: Operation canceled");
  EXPECT_TRUE(runUntil([&] { return children.count() == 0; }));
  children.beginAgain();
  EXPECT_EQ(run("echo again"), "again\n");
}

}  // namespace platform::test
