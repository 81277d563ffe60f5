#include <gtest/gtest.h>

#include <csignal>

#include "platform/foundation/StandardOutput.h"
#include "tests/platform/Pipe.h"

namespace platform {
namespace {

using test::Pipe;

TEST(StandardOutput, WritesALineAtOnce) {
  const Pipe pipe;
  printLine(pipe.writer.get(), "a line");
  EXPECT_EQ(pipe.read(), "a line\n");
  printLine(pipe.writer.get(), "");
  EXPECT_EQ(pipe.read(), "\n");
}

TEST(StandardOutput, CutsWhatAPipeDoesNotTakeAtOnce) {
  const Pipe pipe;
  printLine(pipe.writer.get(), std::string(10'000, 'x'));
  EXPECT_EQ(pipe.read(), std::string(4095, 'x') + "\n");
}

TEST(StandardOutput, DropsALineThatTheReaderHasNoRoomFor) {
  const Pipe pipe;
  printLine(pipe.writer.get(), std::string(4000, 'x'));
  printLine(pipe.writer.get(), std::string(4000, 'y'));  // would wait for ever
  EXPECT_EQ(pipe.read(), std::string(4000, 'x') + "\n");
  printLine(pipe.writer.get(), "z");
  EXPECT_EQ(pipe.read(), "z\n");
}

TEST(StandardOutput, BearsAReaderThatIsGone) {
  const auto before = std::signal(SIGPIPE, SIG_IGN);
  Pipe pipe;
  pipe.reader = FileDescriptor();
  printLine(pipe.writer.get(), "a");
  printLine(-1, "a");
  std::signal(SIGPIPE, before);
}

}  // namespace
}  // namespace platform
