#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "platform/foundation/RegularFile.h"
#include "tests/platform/TemporaryDirectory.h"

namespace platform {
namespace {

using test::readFile;
using test::TemporaryDirectory;
using test::writeFile;

TEST(RegularFileTest, readsUpToTheBound) {
  const TemporaryDirectory directory;
  const auto path = directory.path() / "file";
  const std::string text(40'000, 'x');
  writeFile(path, text);
  const auto content = readRegularFile(path, text.size());
  ASSERT_TRUE(content);
  EXPECT_TRUE(content->text == text);
  EXPECT_EQ(content->state, regularFileState(path));
  EXPECT_EQ(readRegularFile(path, text.size() - 1).error(), std::errc::file_too_large);
}

TEST(RegularFileTest, refusesWhatIsNoRegularFileWithoutWaiting) {
  const TemporaryDirectory directory;
  const auto fifo = directory.path() / "fifo";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  for (const auto& path : {fifo, directory.path(), std::filesystem::path("/dev/zero")}) {
    EXPECT_EQ(readRegularFile(path, 1000).error(), std::errc::operation_not_supported) << path;
    EXPECT_EQ(regularFileState(path).error(), std::errc::operation_not_supported) << path;
  }
  const auto missing = directory.path() / "missing";
  EXPECT_EQ(readRegularFile(missing, 1000).error(), std::errc::no_such_file_or_directory);
  EXPECT_EQ(regularFileState(missing).error(), std::errc::no_such_file_or_directory);
}

TEST(RegularFileTest, replacesForTheOwnerOnly) {
  const TemporaryDirectory directory;
  const auto path = directory.path() / "file";
  writeFile(path, "old");
  const auto old = regularFileState(path);
  const auto replaced = replaceFile(path, "new");
  EXPECT_EQ(readFile(path), "new");
  EXPECT_EQ(replaced, regularFileState(path));
  EXPECT_NE(replaced, old);
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600));
}

}  // namespace
}  // namespace platform
