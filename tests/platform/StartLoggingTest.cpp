#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "platform/foundation/LogSink.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/StartLogging.h"
#include "tests/platform/EnvironmentVariable.h"
#include "tests/platform/JournalSocket.h"
#include "tests/platform/Pipe.h"

namespace platform {
namespace {

using test::EnvironmentVariable;

std::string standardErrorAsStream() {
  struct stat status {};
  ::fstat(STDERR_FILENO, &status);
  return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

TEST(StartLoggingTest, underTheJournalRecordsGoThere) {
  const auto journal = test::JournalSocket::open();
  if (journal == nullptr) {
    GTEST_SKIP() << "this process may not make a mount namespace";
  }
  const EnvironmentVariable stream("JOURNAL_STREAM", standardErrorAsStream().c_str());
  startLogging("proxy");
  NSLog("hello ", 1);
  EXPECT_EQ(journal->receive(), "MESSAGE=hello 1\nPRIORITY=6\nSYSLOG_IDENTIFIER=proxy\n");
  LogSink::setShared(nullptr);
}

TEST(StartLoggingTest, elseToStandardError) {
  const EnvironmentVariable stream("JOURNAL_STREAM", nullptr);
  testing::internal::CaptureStderr();
  startLogging("proxy");
  NSLog("hello ", 1);
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::MatchesRegex("[-0-9]+ [:0-9]+\\.[0-9]+ proxy\\[[0-9]+\\] hello 1\n"));
  LogSink::setShared(nullptr);
}

TEST(StartLoggingTest, aReaderThatGoesAwayDoesNotEndTheProgram) {
  EXPECT_EXIT(
      {
        startLogging("proxy");
        test::Pipe pipe;
        ::dup2(pipe.writer.get(), STDERR_FILENO);
        pipe.reader = FileDescriptor();
        NSLog("nobody reads this");
        ::_exit(3);
      },
      testing::ExitedWithCode(3), "");
}

}  // namespace
}  // namespace platform
