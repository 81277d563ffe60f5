#include <sys/stat.h>
#include <unistd.h>

#include <latch>
#include <thread>

#include "platform/xpc/ServicePlaces.h"
#include "platform/xpc/ServiceSocket.h"
#include "tests/platform/Test.h"

namespace platform::test {

class ServiceSocketTest : public testing::Test {
 protected:
  const TemporaryDirectory folder_;
  const std::filesystem::path path_ = folder_.path() / "name";
};

TEST_F(ServiceSocketTest, LiesInTheFirstDirectoryThatIsNamed) {
  const auto& ours = folder_.path();
  const auto link = ours / "link";
  folder_.run("ln -s . link");
  const TemporaryDirectory others;
  const bool isGivenAway = ::chown(others.path().c_str(), ::geteuid() + 1, gid_t(-1)) == 0;
  const std::tuple<const char*, const char*, std::filesystem::path> cases[] = {
      {"/a:/c", ours.c_str(), "/a/name"},
      {nullptr, ours.c_str(), ours / "name"},
      {"", "", "/run/quillet/name"},
      {"", "/no/folder", "/run/quillet/name"},
      {"", link.c_str(), "/run/quillet/name"},
      {"", isGivenAway ? others.path().c_str() : "/", "/run/quillet/name"}};
  for (const auto& [runtime, user, expected] : cases) {
    const EnvironmentVariable first("RUNTIME_DIRECTORY", runtime);
    const EnvironmentVariable second("XDG_RUNTIME_DIR", user);
    EXPECT_EQ(servicePlaces("name").front(), expected);
  }
}

TEST_F(ServiceSocketTest, SetsModesWhateverTheUmaskAndFollowsNoLinks) {
  using std::filesystem::perms;
  const auto path = folder_.path() / "a" / "b" / "name";
  const auto permissions = [](const auto& file) {
    return std::filesystem::symlink_status(file).permissions();
  };
  const auto umask = ::umask(077);
  {
    const auto socket = ServiceSocket::listen(path);
    EXPECT_TRUE(socket.has_value());
    EXPECT_EQ(permissions(path), perms(0666));
  }
  EXPECT_EQ(::umask(umask), 077U);
  EXPECT_EQ(permissions(folder_.path() / "a"), perms(0755));
  EXPECT_EQ(permissions(folder_.path() / "a" / "b"), perms(0755));
  EXPECT_EQ(permissions(path.native() + ".lock"), perms(0600));

  folder_.run("ln -s ../../target a/b/name; ln -sf ../../target a/b/name.lock");
  EXPECT_FALSE(ServiceSocket::listen(path).has_value());
  std::filesystem::remove(path);
  const auto socket = ServiceSocket::listen(path, 0660);
  EXPECT_TRUE(socket.has_value());
  EXPECT_EQ(permissions(path), perms(0660));
  EXPECT_FALSE(std::filesystem::exists(folder_.path() / "target"));
  const std::string longPath = "/tmp/" + std::string(200, 'x');
  EXPECT_EQ(description(ServiceSocket::listen(longPath).error()),
            "cannot listen at " + longPath + ": the path is too long");
}

TEST_F(ServiceSocketTest, ReplacesAStaleFileForOneOfThoseThatStartTogether) {
  for (int round = 0; round < 60; ++round) {
    EXPECT_EQ(::mknod(path_.c_str(), S_IFSOCK | 0600, 0), 0);
    std::latch end(4);
    std::atomic<int> served = 0;
    const auto start = [&] {
      const auto socket = ServiceSocket::listen(path_);
      served += socket.has_value() ? 1 : 0;
      end.arrive_and_wait();
      EXPECT_EQ(served, 1);
    };
    const std::jthread starts[] = {std::jthread(start), std::jthread(start), std::jthread(start),
                                   std::jthread(start)};
  }
}

}  // namespace platform::test
