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

TEST(HeldBackLinesTest, whatPipeAndBufferHoldComesWholeAndTheRestIsLostByLines) {
  const test::Pipe pipe;
  HeldBackLines lines(pipe.writer.get(), 0);
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

TEST(HeldBackLinesTest, aLineThatTheDiskCutsIsEndedBeforeTheNext) {
  const test::TemporaryDirectory directory;
  const auto path = directory.path() / "log";
  const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  HeldBackLines lines(file.get());
  ::signal(SIGXFSZ, SIG_IGN);
  rlimit former{};
  ::getrlimit(RLIMIT_FSIZE, &former);
  const rlimit small{8, former.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &small);
  lines.append("first\n");
  lines.append("second\n");
  lines.write();
  ::setrlimit(RLIMIT_FSIZE, &former);
  EXPECT_TRUE(lines.takeLoss());
  lines.append("third\n");
  lines.write();
  lines.append("last\n");
  lines.writeFromSignalHandler();
  lines.write();
  EXPECT_EQ(test::readFile(path), "first\nse\nthird\nlast\n");
}

}  // namespace
}  // namespace platform
