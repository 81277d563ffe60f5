#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "platform/dispatch/MainLoop.h"
#include "platform/dispatch/WatchedSocket.h"

namespace platform {
namespace {

/// One end of a pair of connected sockets, and what the loop says of it.
class Watched final : public SocketWatcher {
 public:
  explicit Watched(int type = SOCK_DGRAM) {
    std::array<int, 2> ends{};
    EXPECT_EQ(::socketpair(AF_UNIX, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends.data()), 0);
    socket.open(FileDescriptor(ends[0]));
    peer = FileDescriptor(ends[1]);
  }
  ~Watched() = default;
  Watched(const Watched&) = delete;
  Watched& operator=(const Watched&) = delete;

  void socketIsReady(bool canRead, bool canWrite) override {
    ++calls;
    wasReadable = canRead;
    wasWritable = canWrite;
    if (reaction) {
      reaction();
    }
  }

  void watch(bool reading, bool writing) { EXPECT_FALSE(socket.watch(*this, {reading, writing})); }
  void sendFromPeer() const { EXPECT_EQ(::send(peer.get(), "x", 1, 0), 1); }
  void read() const {
    char byte = 0;
    EXPECT_EQ(::recv(socket.get(), &byte, 1, 0), 1);
  }

  WatchedSocket socket;
  FileDescriptor peer;
  std::function<void()> reaction;
  int calls = 0;
  bool wasReadable = false;
  bool wasWritable = false;
};

void runReady() { MainLoop::shared().runReady(); }

// The event of the closed socket has been fetched when a new one gets its number.
TEST(WatchedSocketTest, NeitherAClosedSocketNorTheNextOfItsNumberHearsOfIt) {
  Watched first;
  Watched second;
  std::vector<std::unique_ptr<Watched>> fresh;
  const auto replace = [&](Watched& reading, Watched& closed) {
    reading.read();
    const int number = closed.socket.get();
    closed.socket.close();
    fresh.push_back(std::make_unique<Watched>());
    EXPECT_EQ(fresh.back()->socket.get(), number);
    fresh.back()->watch(true, false);
  };
  first.reaction = [&] { replace(first, second); };
  second.reaction = [&] { replace(second, first); };
  for (auto* watched : {&first, &second}) {
    watched->watch(true, false);
    watched->sendFromPeer();
  }
  runReady();
  ASSERT_EQ(first.calls + second.calls, 1);
  EXPECT_EQ(fresh.front()->calls, 0);
  fresh.front()->sendFromPeer();
  fresh.front()->reaction = [&] { fresh.front()->read(); };
  runReady();
  EXPECT_EQ(fresh.front()->calls, 1);
}

TEST(WatchedSocketTest, AnErrorAtTheSocketCountsAsBoth) {
  Watched watched(SOCK_STREAM);
  watched.peer = FileDescriptor();  // closed: hang-up
  watched.reaction = [&] { watched.socket.close(); };
  watched.watch(false, true);
  runReady();
  EXPECT_EQ(watched.calls, 1);
  EXPECT_TRUE(watched.wasReadable);
  EXPECT_TRUE(watched.wasWritable);
}

}  // namespace
}  // namespace platform
