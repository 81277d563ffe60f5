#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/dispatch/MainLoop.h"
#include "platform/foundation/Description.h"
#include "platform/network/NWPathMonitor.h"
#include "tests/support/NetworkNamespace.h"

namespace platform {
namespace {

using quillet::test::NetworkNamespace;
using testing::ElementsAre;

/// Two interfaces that are each other's cable, in a network of the test's own.
class NWPathMonitorTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!network_ || !NetworkNamespace::ip("link add v0 type veth peer name v1")) {
      GTEST_SKIP() << "needs a network of its own and a pair of virtual interfaces";
    }
    ip("link set v1 up");
    monitor_.pathUpdateHandler = [this](const NWPath& path) {
      paths_.push_back(description(path));
    };
  }

  static void ip(const std::string& arguments) {
    ASSERT_TRUE(NetworkNamespace::ip(arguments)) << arguments;
  }
  bool runUntilReported(std::size_t paths) {
    return MainLoop::shared().runUntil([&] { return paths_.size() >= paths; });
  }

  const std::unique_ptr<NetworkNamespace> network_ = NetworkNamespace::enter();
  NWPathMonitor monitor_;
  std::vector<std::string> paths_;
};

TEST_F(NWPathMonitorTest, ReportsTheFirstPathAndEachThatDiffersUntilCancelled) {
  const std::string none = "unsatisfied (No network route)";
  const std::string ipv4 = "satisfied (Path is satisfied), interface: v0, ipv4";
  EXPECT_EQ(description(monitor_.currentPath()), none);
  monitor_.start(DispatchQueue::global());
  EXPECT_THAT(paths_, ElementsAre()) << "never within the call";
  ASSERT_TRUE(runUntilReported(1));

  ip("link set v0 up");
  ip("address add 10.9.9.1/24 dev v0");
  ASSERT_TRUE(runUntilReported(2));
  EXPECT_EQ(description(monitor_.currentPath()), ipv4);

  ip("address add 10.9.9.2/24 dev v0");  // no other path
  ip("-6 address add 2001:db8::1/64 dev v0 nodad");
  ASSERT_TRUE(runUntilReported(3));
  ip("link set v0 down");
  ASSERT_TRUE(runUntilReported(4));

  monitor_.cancel();
  monitor_.start(DispatchQueue::global());
  ip("link set v0 up");
  MainLoop::shared().runReady();
  EXPECT_THAT(paths_, ElementsAre(none, ipv4, ipv4 + ", ipv6", none));
}

}  // namespace
}  // namespace platform
