// The receive path of the relay as a whole: bytes in, log lines and replies out. The input is a run
// of events, each a byte for its kind, two for its length (big-endian), and its bytes: a datagram,
// a new client, a receive error or an incomplete receive. All lines are UTF-8; one receive is armed
// after a datagram, none after an error; a reply is the user value, byte for byte.

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "fuzz/Target.h"
#include "platform/base/Utf8.h"
#include "tests/relay_service/FakeConnection.h"
#include "tests/support/LogCapture.h"

namespace quillet::fuzz {

using QuilletXPCservice::test::FakeConnection;
using QuilletXPCservice::test::Listener;

/// A client that is received from.
std::shared_ptr<FakeConnection> connected(Listener& listener) {
  auto client = std::make_shared<FakeConnection>();
  listener.acceptConnection(client);
  client->report(platform::NWConnection::State::Kind::ready);
  require(client->armed() == 1);
  return client;
}

/// Of a datagram that is not empty.
void receive(Listener& listener, FakeConnection& client, std::string_view datagram) {
  const auto user = listener.xpcUser;
  client.done.clear();
  client.deliver(datagram);
  require(client.armed() == 1 && client.done.back() == "receive");
  require(listener.xpcUser == user || datagram.starts_with("&*updateCU"));
  const bool isRequest = datagram.starts_with("&*requestCU");
  require(client.done.size() == (isRequest ? 2 : 1));
  require(!isRequest || client.done.front() == "send " + user);
}

void run(platform::DataView input) {
  const quillet::test::LogCapture log;
  const auto listener = std::make_shared<Listener>();
  auto client = connected(*listener);
  while (input.size() >= 3) {
    const auto event = input.first(std::min(input[1] * 256U + input[2] + 3UL, input.size()));
    const auto bytes = event.subspan(3);
    if (input[0] % 4 == 0 && !bytes.empty()) {
      receive(*listener, *client, platform::textOf(bytes));
    } else {
      if (input[0] % 4 != 1) {
        const auto error =
            input[0] % 4 == 2 ? std::optional(platform::NWError::posix(111)) : std::nullopt;
        client->complete(platform::Data(bytes.begin(), bytes.end()), bytes.empty(), error);
        require(client->armed() == 0);
      }
      client = connected(*listener);
    }
    require(std::ranges::all_of(log.records(), platform::isValidUtf8));
    input = input.subspan(event.size());
  }
}

}  // namespace quillet::fuzz
