#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <string>

#include "platform/foundation/HeldBackLines.h"
#include "tests/platform/Pipe.h"
#include "tests/platform/TemporaryDirectory.h"

namespace platform {
namespace {

constexpr int kNoPatience = 0;

TEST(HeldBackLinesTest, whatPipeAndBufferHoldComesWholeAndTheRestIsLostByLines) {
  const test::Pipe pipe;
  HeldBackLines lines(pipe.writer.get(), kNoPatience);
  std::string given;
  for (int i = 0; i < 2000; ++i) {
    const auto line = std::to_string(i) + ' ' + std::string(64, 'x') + '\n';
    lines.append(line);
    given.append(line);
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
  received.append(pipe.read());
  ASSERT_TRUE(received.ends_with("\nend\n"));
  received.resize(received.size() - 4);
  EXPECT_TRUE(given.starts_with(received));
  EXPECT_GT(received.size(), HeldBackLines::kCapacity);
}

class FileLines : public testing::Test {
 protected:
  const test::TemporaryDirectory directory_;
  const std::filesystem::path path_ = directory_.path() / "log";
  const FileDescriptor file_{::open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)};
  HeldBackLines lines_{file_.get()};
};

TEST_F(FileLines, aLineThatTheDiskCutsIsEndedBeforeTheNext) {
  ::signal(SIGXFSZ, SIG_IGN);
  rlimit former{};
  ::getrlimit(RLIMIT_FSIZE, &former);
  const rlimit small{8, former.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &small);
  lines_.append("first\n");
  lines_.append("second\n");
  lines_.write();
  ::setrlimit(RLIMIT_FSIZE, &former);
  EXPECT_TRUE(lines_.takeLoss());
  lines_.append("third\n");
  lines_.write();
  EXPECT_EQ(test::readFile(path_), "first\nse\nthird\n");
}

TEST_F(FileLines, theSignalHandlersWriteTakesTheLinesOnce) {
  lines_.append("a\n");
  lines_.writeFromSignalHandler();
  lines_.write();
  EXPECT_EQ(test::readFile(path_), "a\n");
}

}  // namespace
}  // namespace platform
