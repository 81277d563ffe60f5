#include <fcntl.h>

#include <csignal>
#include <cstdio>

#include "platform/senders/SenderLookup.h"
#include "tests/platform/Test.h"
#include "tests/platform/senders/TestCgroup.h"

namespace platform::test {

/// Asks who sends from sockets made in cgroups.
class SenderLookupTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!TestCgroup::create("probe")) {
      GTEST_SKIP() << "no cgroups of version 2 to be made here";
    }
  }
  const TestCgroup& cgroup(const std::string& path) {
    return *cgroups_.emplace_back(TestCgroup::create(path));
  }
  static auto socketIn(const TestCgroup& cgroup) {
    return cgroup.inside([] { return std::make_unique<UDPSocket>(); });
  }
  void identify(const SenderQuery& query) {
    lookup_->identify(query, [this](auto application) {
      applications_.emplace_back(application.value_or("unknown"));
    });
  }
  void identify(const UDPSocket& client) {
    identify({{Transport::udp, client.address(), served_, 1}, std::nullopt, false});
  }
  template <class Asked>
  std::string application(const Asked& asked) {
    const auto before = applications_.size();
    identify(asked);
    EXPECT_TRUE(runUntilSize(applications_, before + 1));
    return applications_.back();
  }
  void start(SenderLookup::Depth depth = SenderLookup::Depth::cgroup) {
    lookup_ = SenderLookup::start(depth);
  }

  SharedClock clock_;  // nothing is late before it is told to move
  const SocketAddress served_ = address("127.0.0.1", 53);
  std::vector<std::unique_ptr<TestCgroup>> cgroups_;
  std::shared_ptr<SenderLookup> lookup_;
  Texts applications_;
};

TEST_F(SenderLookupTest, OnlyWhoAsksForAnIdNotSeenWaitsForAWalkOfWhichThereAreFew) {
  const auto known = socketIn(cgroup("system.slice/first.service"));
  start();
  EXPECT_EQ(application(*known), "first.service");
  const auto unseen = socketIn(cgroup("system.slice/second.service"));
  applications_.clear();
  identify(*unseen);
  identify(*known);
  EXPECT_THAT(applications_, ElementsAre("first.service"));
  EXPECT_TRUE(runUntilSize(applications_, 2));
  EXPECT_EQ(applications_.back(), "second.service");

  const auto late = socketIn(cgroup("system.slice/third.service"));
  identify(*late);
  EXPECT_EQ(applications_.back(), "unknown") << "two walks have begun within the second";
  applications_.clear();
  clock_.advanceSeconds(1 - CgroupTree::kMaxWait / 2);
  identify(*late);
  EXPECT_THAT(applications_, IsEmpty()) << "the next one is near";
  clock_.advanceSeconds(CgroupTree::kMaxWait);
  EXPECT_TRUE(runUntilSize(applications_, 1));
  EXPECT_EQ(applications_.back(), "unknown") << "it is not waited for longer";
  EXPECT_TRUE(runUntil([&] {
    identify(*late);
    return applications_.back() == "third.service";
  }));
}

TEST_F(SenderLookupTest, WhatIsGoneIsKnownForAWhile) {
  const auto& first = cgroup("system.slice/first.service");
  const auto known = socketIn(first);
  start();
  EXPECT_EQ(application(*known), "first.service");
  first.remove();
  const auto unseen = socketIn(cgroup("system.slice/short.service"));
  cgroups_.clear();
  clock_.advanceSeconds(2);
  EXPECT_EQ(application(*unseen), "unknown");
  identify(*unseen);
  EXPECT_THAT(applications_, ElementsAre("first.service", "unknown", "unknown"));
  EXPECT_EQ(application(*known), "first.service");
  clock_.advanceSeconds(301);
  EXPECT_EQ(application(*socketIn(cgroup("system.slice/fourth.service"))), "fourth.service");
  EXPECT_EQ(application(*known), "unknown") << "its name was kept for five minutes";
}

TEST_F(SenderLookupTest, NamesTheProgramWhereTheCgroupDoesNotTell) {
  const auto& nameless = cgroup("session-1.scope");
  const auto named = socketIn(cgroup("system.slice/some.service"));
  start(SenderLookup::Depth::process);
  const auto own = std::filesystem::read_symlink("/proc/self/exe").native();
  EXPECT_EQ(application(*named), "some.service");
  const auto outside = socketIn(nameless);
  EXPECT_EQ(application(*outside), "unknown") << "nobody is in there";
  const auto socket = socketIn(nameless);
  EXPECT_EQ(nameless.inside([&] { return application(*socket); }), own);
  identify(*socket);
  EXPECT_EQ(applications_.back(), own) << "remembered";

  const TemporaryDirectory folder;
  const auto program = folder.path() / "a program";
  std::filesystem::copy("/bin/sh", program);
  const auto inherited = socketIn(nameless);
  ::fcntl(inherited->descriptor(), F_SETFD, 0);
  const auto command = "exec '" + program.native() + "' -c 'echo $$; kill -STOP $$'";
  FILE* const child = nameless.inside([&] { return ::popen(command.c_str(), "r"); });
  pid_t id = 0;
  ASSERT_EQ(std::fscanf(child, "%d", &id), 1);
  std::filesystem::remove(program);
  EXPECT_EQ(application(*inherited), program.native());
  ::kill(id, SIGKILL);
  ::pclose(child);

  const auto left = socketIn(nameless);
  nameless.remove();
  EXPECT_EQ(application(*left), own) << "of the user's processes";
}

TEST_F(SenderLookupTest, FindsWhatWasRedirectedByItsOriginalEndsOrItsPort) {
  start();
  const auto client = socketIn(cgroup("system.slice/some.service"));
  const auto elsewhere = address("127.0.0.9", 53);
  client->connect(elsewhere);
  EXPECT_EQ(application(*client), "unknown");
  const auto own = client->address();
  const auto seen = address("127.0.0.1", unusedPort());
  const SenderQuery byEnds{{Transport::udp, seen, served_, 1}, DatagramPath{own, elsewhere}, false};
  EXPECT_EQ(application(byEnds), "some.service");
  const SenderQuery byPort{{Transport::udp, own, served_, 1}, std::nullopt, true};
  EXPECT_EQ(application(byPort), "some.service");
}

}  // namespace platform::test
