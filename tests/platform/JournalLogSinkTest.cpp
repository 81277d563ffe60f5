#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "platform/foundation/JournalLogSink.h"
#include "tests/platform/EnvironmentVariable.h"
#include "tests/platform/JournalSocket.h"

namespace platform {
namespace {

using namespace std::string_literals;
using test::EnvironmentVariable;

constexpr char kOtherFields[] = "PRIORITY=6\nSYSLOG_IDENTIFIER=proxy\n";

class JournalLogSinkTest : public testing::Test {
 protected:
  void SetUp() override {
    if (journal_ == nullptr) {
      GTEST_SKIP() << "this process may not make a mount namespace";
    }
  }

  const std::unique_ptr<test::JournalSocket> journal_ = test::JournalSocket::open();
  JournalLogSink sink_{"proxy"};
};

TEST_F(JournalLogSinkTest, aRecordIsOneEntry) {
  sink_.write("100% plain");
  EXPECT_EQ(journal_->receive(), "MESSAGE=100% plain\n"s + kOtherFields);
  sink_.write("");
  EXPECT_EQ(journal_->receive(), "MESSAGE=\n"s + kOtherFields);
  EXPECT_EQ(journal_->receive(), "");
}

// A field that holds line feeds goes as its name, its size in 64 bits, little-endian, and its
// bytes.
TEST_F(JournalLogSinkTest, lineBreaksMakeNoFields) {
  sink_.write("first\nMESSAGE=forged\n");
  EXPECT_EQ(journal_->receive(),
            "MESSAGE\n\x15\0\0\0\0\0\0\0first\nMESSAGE=forged\n\n"s + kOtherFields);
}

// The comparisons below give a truth, since a failure's texts would fill the screen.
TEST_F(JournalLogSinkTest, aLargeRecordComesWhole) {
  const std::string text(300'000, 'x');
  sink_.write(text);
  EXPECT_TRUE(journal_->receive() == "MESSAGE=" + text + "\n" + kOtherFields);
  sink_.write(text + "\n");  // 0x493E1 bytes
  EXPECT_TRUE(journal_->receive() ==
              "MESSAGE\n\xE1\x93\x04\0\0\0\0\0"s + text + "\n\n" + kOtherFields);
}

TEST_F(JournalLogSinkTest, aRecordLargerThanAnyDatagramComesWhole) {
  const std::string text(9UL << 20, 'x');
  sink_.write(text);
  EXPECT_TRUE(journal_->receive() == "MESSAGE=" + text + "\n" + kOtherFields);
}

TEST(JournalStreamTest, standardErrorIsTheJournalWhenTheVariableNamesIt) {
  struct stat status {};
  ASSERT_EQ(::fstat(STDERR_FILENO, &status), 0);
  const std::string device = std::to_string(status.st_dev);
  const std::string inode = std::to_string(status.st_ino);
  const struct {
    std::string value;
    bool expected;
  } rows[] = {
      {device + ":" + inode, true},
      {device + ":" + std::to_string(status.st_ino + 1), false},
      {std::to_string(status.st_dev + 1) + ":" + inode, false},
      {device + ":" + inode + " ", false},
      {" " + device + ":" + inode, false},
      {device, false},
      {device + ":", false},
      {":" + inode, false},
      {"", false},
      {"18446744073709551616:1", false},
  };
  for (const auto& row : rows) {
    const EnvironmentVariable stream("JOURNAL_STREAM", row.value.c_str());
    EXPECT_EQ(JournalLogSink::isStandardErrorJournal(), row.expected) << row.value;
  }
  const EnvironmentVariable stream("JOURNAL_STREAM", nullptr);
  EXPECT_FALSE(JournalLogSink::isStandardErrorJournal());
}

}  // namespace
}  // namespace platform
