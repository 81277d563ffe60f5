#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "platform/log/JournalLogSink.h"
#include "tests/platform/EnvironmentVariable.h"

namespace {

std::vector<std::string> sentFields;

}  // namespace

// A program's own functions come before those of its libraries; the name is the library's.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int sd_journal_sendv(const iovec* fields, int count) {
  for (int i = 0; i < count; ++i) {
    sentFields.emplace_back(static_cast<const char*>(fields[i].iov_base), fields[i].iov_len);
  }
  return 0;
}

namespace platform {
namespace {

TEST(JournalLogSinkTest, WritesARecordAsOneEntryWhoseLineBreaksMakeNoFields) {
  JournalLogSink("proxy").write("100% plain\nMESSAGE=forged\n");
  EXPECT_THAT(sentFields, testing::ElementsAre("MESSAGE=100% plain\nMESSAGE=forged\n", "PRIORITY=6",
                                               "SYSLOG_IDENTIFIER=proxy"));
}

TEST(JournalLogSinkTest, TakesStandardErrorForTheJournalWhenTheVariableNamesIt) {
  struct stat status {};
  ASSERT_EQ(::fstat(STDERR_FILENO, &status), 0);
  const std::string device = std::to_string(status.st_dev);
  const std::string inode = std::to_string(status.st_ino);
  const auto isJournal = [](const std::string& value) {
    const test::EnvironmentVariable stream("JOURNAL_STREAM", value.c_str());
    return JournalLogSink::isStandardErrorJournal();
  };
  const auto ours = device + ":" + inode;
  EXPECT_TRUE(isJournal(ours));
  for (const auto& value : {ours + "1", "1" + ours, ours + " ", inode}) {
    EXPECT_FALSE(isJournal(value)) << value;
  }
}

}  // namespace
}  // namespace platform
