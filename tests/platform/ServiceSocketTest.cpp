#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <fstream>
#include <future>
#include <latch>
#include <vector>

#include "platform/foundation/Description.h"
#include "platform/xpc/ServiceSocket.h"
#include "tests/platform/EnvironmentVariable.h"
#include "tests/platform/TemporaryDirectory.h"

namespace platform {
namespace {

using test::EnvironmentVariable;
using test::TemporaryDirectory;

TEST(ServiceSocketTest, LiesInTheFirstDirectoryThatIsNamed) {
  struct Case {
    const char* runtime;
    const char* user;
    const char* expected;
  };
  const Case cases[] = {{"/a", "/b", "/a/name"},
                        {"/a:/c", "/b", "/a/name"},
                        {nullptr, "/b", "/b/name"},
                        {"", "/b", "/b/name"},
                        {nullptr, nullptr, "/run/quillet/name"},
                        {"", "", "/run/quillet/name"}};
  for (const auto& [runtime, user, expected] : cases) {
    const EnvironmentVariable first("RUNTIME_DIRECTORY", runtime);
    const EnvironmentVariable second("XDG_RUNTIME_DIR", user);
    EXPECT_EQ(ServiceSocket::pathOf("name"), expected);
  }
}

TEST(ServiceSocketTest, ComesAndGoesWithItsFile) {
  const TemporaryDirectory folder;
  const auto path = folder.path() / "new" / "name";
  {
    const auto socket = ServiceSocket::listen(path);
    ASSERT_TRUE(socket.has_value());
    EXPECT_TRUE(std::filesystem::is_socket(path));
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0666));
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(ServiceSocketTest, ReplacesAStaleFileOnly) {
  const TemporaryDirectory folder;
  const auto path = folder.path() / "name";
  const auto message = "cannot listen at " + path.string() + ": it is in use";
  std::ofstream(path) << "precious";
  EXPECT_EQ(description(ServiceSocket::listen(path).error()), message);
  EXPECT_EQ(std::filesystem::file_size(path), 8U);
  std::filesystem::remove(path);

  auto first = std::make_unique<ServiceSocket>(ServiceSocket::listen(path).value());
  EXPECT_EQ(description(ServiceSocket::listen(path).error()), message);
  EXPECT_TRUE(std::filesystem::is_socket(path));
  first->take();  // its process has died: nobody listens, the file stays
  EXPECT_TRUE(ServiceSocket::listen(path).has_value());
}

TEST(ServiceSocketTest, OnlyOneOfThoseThatStartAtTheSameInstantReplacesAStaleFile) {
  const TemporaryDirectory folder;
  const auto path = folder.path() / "name";
  for (int round = 0; round < 200; ++round) {
    auto stale = ServiceSocket::listen(path).value();
    stale.take();
    std::vector<std::future<bool>> starts;
    std::latch end(4);
    for (int i = 0; i < 4; ++i) {
      starts.push_back(std::async(std::launch::async, [&] {
        const auto socket = ServiceSocket::listen(path);
        end.arrive_and_wait();
        return socket.has_value();
      }));
    }
    EXPECT_EQ(std::ranges::count_if(starts, [](auto& start) { return start.get(); }), 1);
  }
}

TEST(ServiceSocketTest, SaysWhatIsWrong) {
  const std::string longPath = "/tmp/" + std::string(200, 'x');
  EXPECT_EQ(description(ServiceSocket::listen(longPath).error()),
            "cannot listen at " + longPath + ": the path is too long");
  EXPECT_EQ(description(ServiceSocket::listen("/dev/null/name").error()),
            "cannot listen at /dev/null/name: Not a directory");
}

}  // namespace
}  // namespace platform
