#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <array>
#include <csignal>

#include "platform/base/Clock.h"
#include "platform/dispatch/MainLoop.h"
#include "platform/senders/SenderLookup.h"
#include "tests/platform/TemporaryDirectory.h"
#include "tests/platform/UDPSocket.h"
#include "tests/platform/senders/TestCgroup.h"

namespace platform {
namespace {

using test::TestCgroup;
using test::UDPSocket;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kUUID = "0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0";

/// Asks who sends from sockets made in cgroups.
class SenderLookupTest : public testing::Test {
 protected:
  SenderLookupTest() { Clock::setShared(&clock_); }
  ~SenderLookupTest() override {
    lookup_.reset();  // with its threads
    Clock::setShared(nullptr);
  }

  /// `path` in a cgroup of the test's own. Skips the test where there can be none.
  const TestCgroup* cgroup(const std::string& path) {
    if (auto made = TestCgroup::create(path)) {
      return cgroups_.emplace_back(std::move(made)).get();
    }
    return nullptr;
  }
  static auto socketIn(const TestCgroup& cgroup) {
    return cgroup.inside([] { return std::make_unique<UDPSocket>(); });
  }
  void identify(const UDPSocket& client) {
    const auto address = SocketAddress::parse("127.0.0.1", client.port()).value();
    lookup_->identify(
        {{Transport::udp, address, served_, 1}, std::nullopt, false},
        [this](auto application) { applications_.emplace_back(application.value_or("unknown")); });
  }
  std::string application(const UDPSocket& client) {
    const auto before = applications_.size();
    identify(client);
    EXPECT_TRUE(MainLoop::shared().runUntil([&] { return applications_.size() > before; }));
    return applications_.back();
  }
  void start(SenderLookup::Depth depth = SenderLookup::Depth::cgroup) {
    lookup_ = SenderLookup::start(depth);
  }

  ManualClock clock_;  // nothing is late before it is told to move
  const SocketAddress served_ = SocketAddress::parse("127.0.0.1", 53).value();
  std::vector<std::unique_ptr<TestCgroup>> cgroups_;
  std::shared_ptr<SenderLookup> lookup_;
  std::vector<std::string> applications_;
};

TEST_F(SenderLookupTest, NamesTheApplicationByTheCgroupOfTheSocket) {
  const std::string user = "user.slice/user-7.slice/user@7.service/";
  const std::pair<std::string, std::string> rows[] = {
      {user + "app.slice/app-flatpak-org.mozilla.firefox-12.scope", "org.mozilla.firefox"},
      {user + "app.slice/snap.chromium.chromium-" + kUUID + ".scope", "snap.chromium.chromium"},
      {"system.slice/snap.cups.cupsd.service", "snap.cups.cupsd"},
      {user + "app.slice/app-gnome-org.gnome.Evince-9.scope", "org.gnome.Evince"},
      {user + "app.slice/app-gnome-two\\x2dwords@1.service/inner", "two-words"},
      {"system.slice/system-getty.slice/getty@tty1.service", "getty@tty1.service"},
      {user + "session.slice/portal.service", "portal.service"},
      {"user.slice/user-7.slice/session-3.scope", "unknown"},
      {"system.slice/docker-0a.scope/system.slice/cups.service", "unknown"},
      {user + "init.scope", "unknown"},
  };
  std::vector<const TestCgroup*> cgroups;
  for (const auto& [path, application] : rows) {
    cgroups.push_back(cgroup(path));
    if (cgroups.back() == nullptr) {
      GTEST_SKIP() << "no cgroups of version 2 to be made here";
    }
  }
  start();
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(application(*socketIn(*cgroups[i])), rows[i].second) << rows[i].first;
  }
}

TEST_F(SenderLookupTest, OnlyWhoAsksForAnIdNotSeenWaitsForAWalkOfWhichThereAreFew) {
  const auto* const first = cgroup("system.slice/first.service");
  if (first == nullptr) {
    GTEST_SKIP() << "no cgroups of version 2 to be made here";
  }
  start();
  const auto known = socketIn(*first);
  EXPECT_EQ(application(*known), "first.service");
  const auto unseen = socketIn(*cgroup("system.slice/second.service"));
  applications_.clear();
  identify(*unseen);
  identify(*known);
  EXPECT_THAT(applications_, ElementsAre("first.service"));
  EXPECT_TRUE(MainLoop::shared().runUntil([&] { return applications_.size() == 2; }));
  EXPECT_EQ(applications_.back(), "second.service");

  const auto late = socketIn(*cgroup("system.slice/third.service"));
  identify(*late);
  EXPECT_EQ(applications_.back(), "unknown") << "two walks have begun within the second";
  applications_.clear();
  clock_.advanceSeconds(1 - CgroupTree::kMaxWait / 2);
  identify(*late);
  EXPECT_THAT(applications_, IsEmpty()) << "the next one is near";
  clock_.advanceSeconds(CgroupTree::kMaxWait);
  EXPECT_TRUE(MainLoop::shared().runUntil([&] { return !applications_.empty(); }));
  EXPECT_THAT(applications_, ElementsAre("unknown")) << "it is not waited for longer";
  EXPECT_TRUE(MainLoop::shared().runUntil([&] {
    identify(*late);
    return applications_.back() == "third.service";
  }));

  for (const auto& gone : cgroups_) {
    gone->remove();
  }
  const auto unseenAndGone = [&] {
    const auto* const brief = cgroup("system.slice/short.service");
    auto socket = socketIn(*brief);
    brief->remove();
    return socket;
  }();
  clock_.advanceSeconds(2);
  EXPECT_EQ(application(*unseenAndGone), "unknown");
  identify(*unseenAndGone);
  EXPECT_THAT(std::vector(applications_.end() - 2, applications_.end()),
              ElementsAre("unknown", "unknown"));
  EXPECT_EQ(application(*known), "first.service");
  clock_.advanceSeconds(301);
  EXPECT_EQ(application(*socketIn(*cgroup("system.slice/fourth.service"))), "fourth.service");
  EXPECT_EQ(application(*known), "unknown") << "its name was kept for five minutes";
}

/// A program that ends with the test.
class Child {
 public:
  Child(const std::string& program, const TestCgroup& cgroup) {
    std::array<int, 2> started{};
    EXPECT_EQ(::pipe2(started.data(), O_CLOEXEC), 0);
    const FileDescriptor reader(started[0]);
    FileDescriptor writer(started[1]);
    id_ = cgroup.inside([&] {
      const auto id = ::fork();
      if (id == 0) {
        ::execl(program.c_str(), program.c_str(), "1000", nullptr);
        ::_exit(127);
      }
      return id;
    });
    writer = FileDescriptor();
    char none = 0;
    EXPECT_EQ(::read(reader.get(), &none, 1), 0);  // once the program runs
  }
  ~Child() {
    ::kill(id_, SIGKILL);
    ::waitpid(id_, nullptr, 0);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

 private:
  pid_t id_ = 0;
};

TEST_F(SenderLookupTest, NamesTheProgramWhereTheCgroupDoesNotTell) {
  const auto* const nameless = cgroup("session-1.scope");
  const auto* const named = cgroup("system.slice/some.service");
  if (nameless == nullptr || named == nullptr) {
    GTEST_SKIP() << "no cgroups of version 2 to be made here";
  }
  start(SenderLookup::Depth::process);
  const auto own = std::filesystem::read_symlink("/proc/self/exe").native();
  EXPECT_EQ(application(*socketIn(*named)), "some.service");
  const auto inside = socketIn(*nameless);
  EXPECT_EQ(application(*inside), "unknown") << "nobody is in there";
  const auto socket = socketIn(*nameless);
  EXPECT_EQ(nameless->inside([&] { return application(*socket); }), own);
  identify(*socket);
  EXPECT_EQ(applications_.back(), own) << "remembered";

  const test::TemporaryDirectory folder;
  const auto program = folder.path() / "a program";
  std::filesystem::copy("/bin/sleep", program);
  const auto inherited = socketIn(*nameless);
  ::fcntl(inherited->descriptor(), F_SETFD, 0);
  {
    const Child child(program, *nameless);
    std::filesystem::remove(program);
    EXPECT_EQ(application(*inherited), program.native());
  }
  const auto left = socketIn(*nameless);
  nameless->remove();
  EXPECT_EQ(application(*left), own) << "of the user's processes";
}

TEST_F(SenderLookupTest, FindsWhatWasRedirectedByItsOriginalEndsOrItsPort) {
  const auto* const cgroup = this->cgroup("system.slice/some.service");
  if (cgroup == nullptr) {
    GTEST_SKIP() << "no cgroups of version 2 to be made here";
  }
  start();
  const auto client = socketIn(*cgroup);
  const auto elsewhere = SocketAddress::parse("127.0.0.9", 53).value();
  client->connect(elsewhere);
  EXPECT_EQ(application(*client), "unknown");
  const auto address = SocketAddress::parse("127.0.0.1", client->port()).value();
  const auto seen = SocketAddress::parse("127.0.0.1", test::unusedPort()).value();
  const SenderQuery queries[] = {
      {{Transport::udp, seen, served_, 1}, DatagramPath{address, elsewhere}, false},
      {{Transport::udp, address, served_, 1}, std::nullopt, true},
  };
  for (const auto& query : queries) {
    applications_.clear();
    lookup_->identify(query, [&](auto name) { applications_.emplace_back(name.value_or("")); });
    MainLoop::shared().runUntil([&] { return !applications_.empty(); });
    EXPECT_THAT(applications_, ElementsAre("some.service"));
  }
}

}  // namespace
}  // namespace platform
