#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/foundation/Clock.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/StreamLogSink.h"
#include "tests/platform/EnvironmentVariable.h"
#include "tests/platform/Pipe.h"
#include "tests/platform/TemporaryDirectory.h"

namespace platform {
namespace {

using test::EnvironmentVariable;

std::string pid() { return std::to_string(::getpid()); }

/// Keeps each call of write(2) apart, as one packet.
class Packets {
 public:
  Packets() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) == 0) {
      reader_ = FileDescriptor(ends[0]);
      writer_ = FileDescriptor(ends[1]);
    }
  }

  [[nodiscard]] int writer() const { return writer_.get(); }

  /// The next packet; empty when there is none.
  [[nodiscard]] std::string next() const {
    std::string text(64UL * 1024, '\0');
    const ssize_t count = ::read(reader_.get(), text.data(), text.size());
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
  }

 private:
  FileDescriptor reader_;
  FileDescriptor writer_;
};

class StreamLogSinkTest : public testing::Test {
 protected:
  void SetUp() override { Clock::setShared(&clock_); }
  void TearDown() override { Clock::setShared(nullptr); }

  const EnvironmentVariable tz_{"TZ", "UTC"};
  ManualClock clock_{1'795'385'994'123'999};  // 2026-11-22 22:19:54.123999
  const Packets packets_;
  StreamLogSink sink_{packets_.writer(), "proxy"};
};

TEST_F(StreamLogSinkTest, oneLineARecord) {
  sink_.write("first\nsecond \x1B");
  EXPECT_EQ(packets_.next(), "2026-11-22 22:19:54.123 proxy[" + pid() + "] first\\nsecond \\x1B\n");
  sink_.write("");
  EXPECT_EQ(packets_.next(), "2026-11-22 22:19:54.123 proxy[" + pid() + "] \n");
}

TEST_F(StreamLogSinkTest, theTimeMovesOn) {
  const struct {
    double seconds;
    const char* time;
  } rows[] = {
      {0, "2026-11-22 22:19:54.123 "},      {0.001, "2026-11-22 22:19:54.124 "},
      {0.88, "2026-11-22 22:19:55.004 "},   {86400, "2026-11-23 22:19:55.004 "},
      {-86400, "2026-11-22 22:19:55.004 "}, {-1.8e9, "1970-01-01 00:00:00.000 "},
  };
  for (const auto& row : rows) {
    clock_.advanceSeconds(row.seconds);
    sink_.write("x");
    EXPECT_THAT(packets_.next(), testing::StartsWith(row.time));
  }
}

TEST_F(StreamLogSinkTest, theTimeZoneMayChange) {
  sink_.write("x");
  EXPECT_THAT(packets_.next(), testing::HasSubstr(" 22:19:54"));
  const EnvironmentVariable tz("TZ", "XYZ-2");
  clock_.advanceSeconds(1);
  sink_.write("x");
  EXPECT_THAT(packets_.next(), testing::StartsWith("2026-11-23 00:19:55"));
}

TEST_F(StreamLogSinkTest, aProcessNameThatIsNoText) {
  StreamLogSink(packets_.writer(), "a\nb\x1B").write("x");
  EXPECT_THAT(packets_.next(), testing::HasSubstr(" a\\nb\\x1B["));
}

TEST_F(StreamLogSinkTest, aBatchIsOneWrite) {
  LogSink::setShared(std::make_unique<StreamLogSink>(packets_.writer(), "proxy"));
  {
    const LogBatch outer;
    NSLog("a");
    {
      const LogBatch inner;
      NSLog("b");
    }
    EXPECT_EQ(packets_.next(), "");
    NSLog("c");
  }
  const std::string prefix = "2026-11-22 22:19:54.123 proxy[" + pid() + "] ";
  EXPECT_EQ(packets_.next(), prefix + "a\n" + prefix + "b\n" + prefix + "c\n");
  NSLog("d");
  EXPECT_EQ(packets_.next(), prefix + "d\n");
  LogSink::setShared(nullptr);
}

TEST_F(StreamLogSinkTest, theEndOfASinkWritesWhatItHolds) {
  const LogBatch batch;
  LogSink::setShared(std::make_unique<StreamLogSink>(packets_.writer(), "proxy"));
  NSLog("a");
  LogSink::setShared(nullptr);
  EXPECT_THAT(packets_.next(), testing::EndsWith("a\n"));
}

TEST_F(StreamLogSinkTest, aRecordTellsOfLostOnes) {
  const test::Pipe pipe(O_NONBLOCK);
  ::fcntl(pipe.reader.get(), F_SETFL, O_NONBLOCK);
  StreamLogSink sink(pipe.writer.get(), "proxy");
  const std::string text(10'000, 'x');
  for (int i = 0; i < 10; ++i) {  // pipe and buffer hold 68 KiB
    sink.write(text);
  }
  std::string received;
  for (int i = 0; i < 20; ++i) {
    received.append(pipe.read());
    sink.flush();
  }
  sink.write("end");
  received.append(pipe.read());
  EXPECT_THAT(received, testing::HasSubstr("] (log records were lost here)\n"));
  EXPECT_THAT(received, testing::EndsWith("] end\n"));
}

TEST_F(StreamLogSinkTest, recordsOfSeveralThreadsStayWholeAndInOrder) {
  const test::TemporaryDirectory directory;
  const auto path = directory.path() / "log";
  const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  LogSink::setShared(std::make_unique<StreamLogSink>(file.get(), "proxy"));
  constexpr int kThreads = 4;
  constexpr int kRecords = 500;
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([thread] {
      for (int i = 0; i < kRecords; ++i) {
        const LogBatch batch;
        NSLog("thread ", thread, " record ", i, ' ', std::string(200, 'x'), " end");
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  LogSink::setShared(nullptr);

  std::map<int, int> next;
  std::istringstream lines(test::readFile(path));
  for (std::string line; std::getline(lines, line);) {
    int thread = -1;
    int record = -1;
    const std::size_t at = line.find("] ");
    ASSERT_NE(at, std::string::npos);
    ASSERT_EQ(std::sscanf(line.c_str() + at, "] thread %d record %d", &thread, &record), 2) << line;
    ASSERT_TRUE(line.ends_with("x end")) << line;
    EXPECT_EQ(record, next[thread]++);
  }
  EXPECT_EQ(next, (std::map<int, int>{{0, 500}, {1, 500}, {2, 500}, {3, 500}}));
}

}  // namespace
}  // namespace platform
