#include <sys/resource.h>
#include <unistd.h>

#include "platform/base/FileDescriptor.h"
#include "tests/platform/ConnectionTest.h"

namespace platform::test {

using OpenConnectionsTest = ConnectionTest;

TEST_F(OpenConnectionsTest, OneMoreCancelsTheOneIdleLongest) {
  OpenConnections::shared().setLimit(3);
  const UDPSocket server;
  const auto a = readyTo(server.port(), "a ");
  const auto b = readyTo(server.port(), "b ");
  const auto c = readyTo(server.port(), "c ");
  send(a, "q");
  const auto clientOfA = server.receive().value().from;
  send(b, "q");
  receive(a);
  server.send("answer", clientOfA);
  ASSERT_TRUE(runUntilSize(lines_, 3));  // idle longest first: c, b, a
  lines_.clear();
  const auto d = started("127.0.0.1", server.port(), "d ");
  OpenConnections::shared().setLimit(2);
  const auto e = started("no address", 1, "e ");
  EXPECT_EQ(NWConnection::openCount(), 2U);
  runReady();
  EXPECT_THAT(lines_, ElementsAre("c cancelled", "d setup", "d preparing", "d ready", "b cancelled",
                                  "a cancelled", "e setup", "e preparing",
                                  "e waiting(-65554: NoSuchRecord)"));
}

/// Starts it while there is no descriptor to be had.
void startWithoutDescriptors(const Connection& connection) {
  rlimit former{};
  ::getrlimit(RLIMIT_NOFILE, &former);
  const auto next = static_cast<rlim_t>(FileDescriptor(::dup(STDIN_FILENO)).get());
  const rlimit noRoom{next, former.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &noRoom), 0);
  connection->start(DispatchQueue::global());
  ::setrlimit(RLIMIT_NOFILE, &former);
}

TEST_F(OpenConnectionsTest, WithoutADescriptorTheOneIdleLongestGivesItsOwnOrItFails) {
  const auto idle = readyTo(53, "idle ");
  const auto next = make("127.0.0.1", 53);
  startWithoutDescriptors(next);
  runReady();
  EXPECT_THAT(lines_, ElementsAre("idle cancelled", "setup", "preparing", "ready"));
  next->cancel();
  runReady();
  lines_.clear();
  const auto last = make("127.0.0.1", 53);
  startWithoutDescriptors(last);
  receive(last);
  runReady();
  send(last, "q");
  runReady();
  const std::string error = "POSIXErrorCode(rawValue: 24): Too many open files";
  EXPECT_THAT(lines_, ElementsAre("setup", "preparing", "failed(" + error + ")", "got " + error,
                                  "sent q " + error));
}

}  // namespace platform::test
