#include <sys/stat.h>
#include <unistd.h>

#include "platform/log/JournalLogSink.h"
#include "tests/platform/Test.h"

namespace platform::test {

TEST(JournalLogSinkTest, TakesStandardErrorForTheJournalWhenTheVariableNamesIt) {
  struct stat status {};
  ASSERT_EQ(::fstat(STDERR_FILENO, &status), 0);
  const std::string device = std::to_string(status.st_dev);
  const std::string inode = std::to_string(status.st_ino);
  const auto isJournal = [](const std::string& value) {
    const EnvironmentVariable stream("JOURNAL_STREAM", value.c_str());
    return JournalLogSink::isStandardErrorJournal();
  };
  const auto ours = device + ":" + inode;
  EXPECT_TRUE(isJournal(ours));
  for (const auto& value : {ours + "1", "1" + ours, ours + " ", inode}) {
    EXPECT_FALSE(isJournal(value)) << value;
  }
}

}  // namespace platform::test
