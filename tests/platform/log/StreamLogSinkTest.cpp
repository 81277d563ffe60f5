#include <unistd.h>

#include "platform/log/StreamLogSink.h"
#include "tests/platform/Pipe.h"
#include "tests/platform/Test.h"

namespace platform::test {

const std::string kName = "proxy[" + std::to_string(::getpid()) + "] ";

class StreamLogSinkTest : public testing::Test {
 protected:
  const EnvironmentVariable tz_{"TZ", "UTC"};
  SharedClock clock_{1'795'385'994'123'999};  // 2026-11-22 22:19:54.123999
  const Pipe pipe_;
  StreamLogSink sink_{pipe_.writer.get(), "proxy"};
};

TEST_F(StreamLogSinkTest, WritesARecordAsOneLineWithItsTime) {
  sink_.write("first\nsecond \x1B");
  EXPECT_EQ(pipe_.read(), "2026-11-22 22:19:54.123 " + kName + "first\\nsecond \\x1B\n");
  const std::pair<double, const char*> rows[] = {{0.001, "2026-11-22 22:19:54.124 "},
                                                 {0.88, "2026-11-22 22:19:55.004 "},
                                                 {86400, "2026-11-23 22:19:55.004 "},
                                                 {-1.8e9, "1970-01-01 00:00:00.000 "}};
  for (const auto& [seconds, time] : rows) {
    clock_.advanceSeconds(seconds);
    sink_.write("");
    EXPECT_EQ(pipe_.read(), time + kName + "\n");
  }
}

TEST_F(StreamLogSinkTest, RecordsOfOneHandlerShowOneTimeButNotTooMany) {
  const LogBatch batch;
  std::string expected;
  for (const int millisecond : {123, 140, 157}) {
    for (int record = 0; record < (millisecond == 157 ? 2 : 17); ++record) {
      sink_.write("");
      clock_.advanceSeconds(0.001);
      expected += "2026-11-22 22:19:54." + std::to_string(millisecond) + " " + kName + "\n";
    }
  }
  sink_.flush();
  EXPECT_EQ(pipe_.read(), expected);
}

TEST_F(StreamLogSinkTest, WritesWhatPipeAndBufferHoldWholeAndARecordForTheRest) {
  const std::string prefix = "2026-11-22 22:19:54.123 " + kName;
  std::string expected;
  for (int i = 0; i < 6; ++i) {
    sink_.write(std::string(10'000, 'x'));
    expected += prefix + std::string(10'000, 'x') + "\n";
  }
  sink_.write(std::string(10'000, 'y'));  // pipe and buffer hold 68 KiB
  std::string received;
  for (int i = 0; i < 20; ++i) {
    received.append(pipe_.read());
    sink_.flush();
  }
  EXPECT_TRUE(received == expected);
  sink_.write("end");
  EXPECT_EQ(pipe_.read(), prefix + "(log records were lost here)\n" + prefix + "end\n");
}

}  // namespace platform::test
