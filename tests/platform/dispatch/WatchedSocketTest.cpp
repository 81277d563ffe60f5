#include <unistd.h>

#include "platform/dispatch/WatchedSocket.h"
#include "tests/platform/Pipe.h"
#include "tests/platform/Test.h"

namespace platform::test {

/// An end of a pipe, and what the loop says of it.
class Watched final : public SocketWatcher {
 public:
  Watched() {
    socket.open(std::move(pipe.reader));
    EXPECT_FALSE(socket.watch(*this, {true, false}));
  }

  void socketIsReady(bool canRead, bool canWrite) override {
    ++calls;
    last = {canRead, canWrite};
    reaction();
  }
  void send() const { EXPECT_EQ(::write(pipe.writer.get(), "x", 1), 1); }
  void read() const {
    char byte = 0;
    EXPECT_EQ(::read(socket.get(), &byte, 1), 1);
  }

  Pipe pipe;
  WatchedSocket socket;
  std::function<void()> reaction;
  int calls = 0;
  SocketInterest last;
};

// The event of the closed one has been fetched when a new one gets its number.
TEST(WatchedSocketTest, NeitherAClosedOneNorTheNextOfItsNumberHearsOfIt) {
  Watched first;
  Watched second;
  std::unique_ptr<Watched> fresh;
  const auto replace = [&](Watched& reading, Watched& closed) {
    reading.read();
    const int number = closed.socket.get();
    closed.socket.close();
    fresh = std::make_unique<Watched>();
    EXPECT_EQ(fresh->socket.get(), number);
  };
  first.reaction = [&] { replace(first, second); };
  second.reaction = [&] { replace(second, first); };
  first.send();
  second.send();
  runReady();
  ASSERT_EQ(first.calls + second.calls, 1);
  EXPECT_EQ(fresh->calls, 0);
  fresh->send();
  fresh->send();
  fresh->reaction = [&] { fresh->read(); };
  runReady();  // comes back when nothing is left to read
  EXPECT_EQ(fresh->calls, 2);
  EXPECT_EQ(fresh->last, (SocketInterest{true, false}));
}

}  // namespace platform::test
