#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <sstream>
#include <string>

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

}  // namespace
}  // namespace platform
