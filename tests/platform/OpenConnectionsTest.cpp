#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include "platform/foundation/FileDescriptor.h"
#include "tests/platform/ConnectionTest.h"

namespace platform {
namespace {

using test::UDPSocket;
using testing::ElementsAre;

class OpenConnectionsTest : public test::ConnectionTest {};

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
  ASSERT_TRUE(runUntilLines(3));  // idle longest first: c, b, a
  lines_.clear();
  const auto d = startedTo(server.port(), "d ");
  EXPECT_EQ(NWConnection::openCount(), 3U);
  runReady();
  EXPECT_THAT(lines_, ElementsAre("c cancelled", "d setup", "d preparing", "d ready"));
  lines_.clear();
  OpenConnections::shared().setLimit(2);
  const auto e = make("no address", 1, "e ");
  start(e);
  EXPECT_EQ(NWConnection::openCount(), 2U);
  runReady();
  EXPECT_THAT(lines_, ElementsAre("b cancelled", "a cancelled", "e setup", "e preparing",
                                  "e waiting(-65554: NoSuchRecord)"));
}

/// The limit on open descriptors while it lives.
class DescriptorLimit {
 public:
  explicit DescriptorLimit(rlim_t limit) {
    ::getrlimit(RLIMIT_NOFILE, &former_);
    const rlimit lowered{limit, former_.rlim_max};
    EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &lowered), 0);
  }
  ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &former_); }
  DescriptorLimit(const DescriptorLimit&) = delete;
  DescriptorLimit& operator=(const DescriptorLimit&) = delete;

 private:
  rlimit former_{};
};

/// A limit under which no descriptor can be opened; what is open stays so.
rlim_t noRoom() {
  const FileDescriptor next(::dup(STDIN_FILENO));
  return static_cast<rlim_t>(next.get());
}

TEST_F(OpenConnectionsTest, WithoutADescriptorToBeHadItFails) {
  const auto connection = make("127.0.0.1", 53);
  {
    const DescriptorLimit limit(noRoom());
    start(connection);
  }
  receive(connection);
  runReady();
  const std::string error = "POSIXErrorCode(rawValue: 24): Too many open files";
  EXPECT_THAT(lines_, ElementsAre("setup", "preparing", "failed(" + error + ")", "got " + error));
  send(connection, "q");
  runReady();
  EXPECT_EQ(lines_.back(), "sent q " + error);
}

}  // namespace
}  // namespace platform
