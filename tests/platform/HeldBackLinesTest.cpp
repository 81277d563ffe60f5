#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <csignal>
#include <string>

#include "platform/foundation/HeldBackLines.h"
#include "tests/platform/Pipe.h"
#include "tests/platform/TemporaryDirectory.h"

namespace platform {
namespace {

using test::Pipe;

// Patience in milliseconds.
constexpr int kNone = 0;

/// Line number `i`, of about 70 bytes.
std::string lineOf(int i) { return std::to_string(i) + ' ' + std::string(64, 'x') + '\n'; }

std::string linesUpTo(int count) {
  std::string lines;
  for (int i = 0; i < count; ++i) {
    lines.append(lineOf(i));
  }
  return lines;
}

TEST(HeldBackLinesTest, aFullPipeThatIsReadAtLastLosesNothing) {
  const Pipe pipe(O_NONBLOCK);
  HeldBackLines lines(pipe.writer.get(), kNone);
  constexpr int kCount = 300;  // five times the pipe's room, a third of the buffer's
  for (int i = 0; i < kCount; ++i) {
    lines.append(lineOf(i));
    lines.write();
  }
  const std::string expected = linesUpTo(kCount);
  std::string received;
  while (received.size() < expected.size()) {
    received.append(pipe.read());
    lines.write();
  }
  EXPECT_TRUE(received == expected);
  EXPECT_FALSE(lines.takeLoss());
}

TEST(HeldBackLinesTest, beyondTheBufferWholeLinesAreLost) {
  Pipe pipe(O_NONBLOCK);
  HeldBackLines lines(pipe.writer.get(), kNone);
  for (int i = 0; i < 2000; ++i) {
    lines.append(lineOf(i));
  }
  EXPECT_TRUE(lines.takeLoss());
  EXPECT_FALSE(lines.takeLoss());
  std::string received = pipe.read();
  while (received.size() < HeldBackLines::kCapacity) {  // less than what pipe and buffer hold
    lines.write();
    received.append(pipe.read());
  }
  lines.append("end\n");
  lines.write();
  pipe.writer = FileDescriptor();
  received.append(pipe.readToEnd());
  ASSERT_TRUE(received.ends_with("\nend\n"));
  received.resize(received.size() - 4);
  EXPECT_TRUE(received == linesUpTo(2000).substr(0, received.size()));
  EXPECT_GT(received.size(), HeldBackLines::kCapacity);
}

class FileLines : public testing::Test {
 protected:
  const test::TemporaryDirectory directory_;
  const std::filesystem::path path_ = directory_.path() / "log";
  const FileDescriptor file_{::open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)};
};

TEST_F(FileLines, aLineThatTheDiskCutsIsEndedBeforeTheNext) {
  ::signal(SIGXFSZ, SIG_IGN);
  rlimit former{};
  ::getrlimit(RLIMIT_FSIZE, &former);
  const rlimit small{8, former.rlim_max};
  HeldBackLines lines(file_.get());
  ::setrlimit(RLIMIT_FSIZE, &small);
  lines.append("first\n");
  lines.append("second\n");
  lines.write();
  ::setrlimit(RLIMIT_FSIZE, &former);
  EXPECT_TRUE(lines.takeLoss());
  lines.append("third\n");
  lines.write();
  EXPECT_EQ(test::readFile(path_), "first\nse\nthird\n");
}

TEST_F(FileLines, theSignalHandlersWriteTakesTheLinesOnce) {
  HeldBackLines lines(file_.get());
  lines.append("a\n");
  lines.writeFromSignalHandler();
  lines.write();
  EXPECT_EQ(test::readFile(path_), "a\n");
}

}  // namespace
}  // namespace platform
