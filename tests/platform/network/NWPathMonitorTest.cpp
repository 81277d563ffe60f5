#include "platform/network/NWPathMonitor.h"
#include "tests/platform/Test.h"
#include "tests/support/NetworkNamespace.h"

namespace platform::test {

// In a network of the test's own, with two interfaces that are each other's cable.
TEST(NWPathMonitorTest, ReportsTheFirstPathAndEachThatDiffersUntilItIsCancelled) {
  const auto network = NetworkNamespace::enter({"link add v0 type veth peer name v1"});
  if (!network) {
    GTEST_SKIP() << "needs a network of its own and a pair of virtual interfaces";
  }
  const auto ip = [](const char* change) { EXPECT_TRUE(NetworkNamespace::ip(change)) << change; };
  const std::string none = "unsatisfied (No network route)";
  const std::string ipv4 = "satisfied (Path is satisfied), interface: v0, ipv4";
  NWPathMonitor monitor;
  std::vector<std::string> paths;
  monitor.pathUpdateHandler = [&](const NWPath& path) { paths.push_back(description(path)); };
  ip("link set v1 up");
  monitor.start(DispatchQueue::global());
  EXPECT_THAT(paths, ElementsAre()) << "never within the call";
  ASSERT_TRUE(runUntilSize(paths, 1));

  ip("link set v0 up");
  ip("address add 10.9.9.1/24 dev v0");
  ASSERT_TRUE(runUntilSize(paths, 2));
  ip("address add 10.9.9.2/24 dev v0");  // no other path
  ip("-6 address add 2001:db8::1/64 dev v0 nodad");
  ASSERT_TRUE(runUntilSize(paths, 3));
  EXPECT_EQ(description(monitor.currentPath()), ipv4 + ", ipv6");
  ip("link set v0 down");
  ASSERT_TRUE(runUntilSize(paths, 4));
  const auto expected = ElementsAre(none, ipv4, ipv4 + ", ipv6", none);
  EXPECT_THAT(paths, expected);

  ip("link set v0 up");
  monitor.cancel();
  monitor.start(DispatchQueue::global());
  runReady();
  EXPECT_THAT(paths, expected);
}

}  // namespace platform::test
