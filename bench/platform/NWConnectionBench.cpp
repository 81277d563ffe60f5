// What one exchange costs: a connection opened, one datagram each way, cancelled. The argument is
// how many are under way at once; the other side is a plain socket, and its share is counted in.

#include <benchmark/benchmark.h>

#include "platform/dispatch/MainLoop.h"
#include "platform/network/NWConnection.h"
#include "tests/platform/Socket.h"

namespace {

using platform::Data;
using platform::MainLoop;
using platform::NWConnection;
using platform::NWEndpoint;

/// One exchange, kept alive by the connection's handlers.
void exchange(std::uint16_t port, int& answers) {
  const auto connection =
      NWConnection::create(NWEndpoint::Host("127.0.0.1"), NWEndpoint::Port(port));
  connection->stateUpdateHandler = [connection, &answers](const NWConnection::State& state) {
    if (state.kind != NWConnection::State::Kind::ready) {
      return;
    }
    connection->send(Data(60), [connection, &answers](const auto&) {
      connection->receiveMessage([connection, &answers](auto&&...) {
        ++answers;
        connection->cancel();
      });
    });
  };
  connection->start(platform::DispatchQueue::global());
}

void BM_Exchange(benchmark::State& state) {
  const auto atOnce = static_cast<int>(state.range(0));
  const platform::test::UDPSocket server;
  auto& loop = MainLoop::shared();
  for (auto _ : state) {
    int answers = 0;
    for (int i = 0; i < atOnce; ++i) {
      exchange(server.port(), answers);
    }
    int questions = 0;
    const bool isDone = loop.runUntil([&] {
      for (; questions < atOnce; ++questions) {
        const auto received = server.receive();
        if (!received) {
          break;
        }
        server.send(received->text, received->from);
      }
      return answers == atOnce;
    });
    if (!isDone) {
      state.SkipWithError("answers are missing");
      return;
    }
  }
  state.SetItemsProcessed(state.iterations() * atOnce);
}
BENCHMARK(BM_Exchange)->Arg(1)->Arg(64);

}  // namespace
