#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/JournalLogSink.h"
#include "tests/platform/EnvironmentVariable.h"

namespace platform {
namespace {

using namespace std::string_literals;
using test::EnvironmentVariable;

constexpr char kJournal[] = "/run/systemd/journal/socket";

/// Stands where the journal listens, in a mount namespace that the process never leaves.
class JournalLogSinkTest : public testing::Test {
 protected:
  void SetUp() override {
    if (::unshare(CLONE_NEWNS) != 0 ||
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("tmpfs", "/run", "tmpfs", 0, nullptr) != 0) {
      GTEST_SKIP() << "this process may not make a mount namespace";
    }
    std::filesystem::create_directories(std::filesystem::path(kJournal).parent_path());
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, kJournal, sizeof kJournal);
    const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
    ASSERT_EQ(::bind(socket_.get(), generic, sizeof address), 0);
  }

  /// The bytes of the next entry, which has been sent already; empty when there is none.
  [[nodiscard]] std::string receive() const {
    std::string bytes(4096, '\0');
    const ssize_t count = ::recv(socket_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
  }

  const FileDescriptor socket_{::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
};

// A field that holds line feeds goes as its name, its size in 64 bits, little-endian, and its
// bytes.
TEST_F(JournalLogSinkTest, aRecordIsOneEntryAndItsLineBreaksMakeNoFields) {
  JournalLogSink sink("proxy");
  const std::string others = "PRIORITY=6\nSYSLOG_IDENTIFIER=proxy\n";
  sink.write("100% plain");
  EXPECT_EQ(receive(), "MESSAGE=100% plain\n" + others);
  sink.write("");
  EXPECT_EQ(receive(), "MESSAGE=\n" + others);
  sink.write("first\nMESSAGE=forged\n");
  EXPECT_EQ(receive(), "MESSAGE\n\x15\0\0\0\0\0\0\0first\nMESSAGE=forged\n\n"s + others);
  EXPECT_EQ(receive(), "");
}

TEST(JournalStreamTest, standardErrorIsTheJournalWhenTheVariableNamesIt) {
  struct stat status {};
  ASSERT_EQ(::fstat(STDERR_FILENO, &status), 0);
  const std::string device = std::to_string(status.st_dev);
  const std::string inode = std::to_string(status.st_ino);
  const std::pair<std::string, bool> rows[] = {
      {device + ":" + inode, true},
      {device + ":" + std::to_string(status.st_ino + 1), false},
      {std::to_string(status.st_dev + 1) + ":" + inode, false},
      {device + ":" + inode + " ", false},
      {device, false},
      {":", false},
  };
  for (const auto& [value, expected] : rows) {
    const EnvironmentVariable stream("JOURNAL_STREAM", value.c_str());
    EXPECT_EQ(JournalLogSink::isStandardErrorJournal(), expected) << value;
  }
  const EnvironmentVariable stream("JOURNAL_STREAM", nullptr);
  EXPECT_FALSE(JournalLogSink::isStandardErrorJournal());
}

}  // namespace
}  // namespace platform
