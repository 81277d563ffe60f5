#include <fcntl.h>
#include <sys/resource.h>

#include <csignal>

#include "platform/base/FileDescriptor.h"
#include "platform/log/HeldBackLines.h"
#include "tests/platform/Test.h"

namespace platform::test {

TEST(HeldBackLinesTest, EndsALineThatTheDiskHasCutBeforeTheNext) {
  const TemporaryDirectory directory;
  const auto path = directory.path() / "log";
  const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  HeldBackLines lines(file.get());
  ::signal(SIGXFSZ, SIG_IGN);
  rlimit former{};
  ::getrlimit(RLIMIT_FSIZE, &former);
  const rlimit small{8, former.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &small);
  lines.append("first\nsecond\n");
  lines.write();
  ::setrlimit(RLIMIT_FSIZE, &former);
  EXPECT_TRUE(lines.takeLoss());
  EXPECT_FALSE(lines.takeLoss());
  lines.append("third\n");
  lines.write();
  lines.append("last\n");
  lines.writeFromSignalHandler();
  lines.write();
  EXPECT_EQ(readFile(path), "first\nse\nthird\nlast\n");
}

}  // namespace platform::test
