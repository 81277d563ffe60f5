// The receive path of the relay as a whole: bytes in, log lines and replies out. The input is a run
// of events, each a byte for its kind, two for its length (big-endian), and its bytes: a datagram,
// a new client, a receive error or an incomplete receive. Every datagram leaves the lines of its
// kind; one receive is armed after it, none after an error; a reply is the user value, byte for
// byte.

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/Target.h"
#include "platform/base/Utf8.h"
#include "relay_service/UDPListener.h"
#include "tests/relay_service/FakeConnection.h"
#include "tests/support/LogCapture.h"

namespace quillet::fuzz {

using QuilletXPCservice::UDPListener;
using QuilletXPCservice::test::FakeConnection;
using Kind = platform::NWConnection::State::Kind;
using Lines = std::vector<std::string>;

class Listener final : public UDPListener {
 public:
  Listener() : UDPListener({"", "flush"}) {}

  std::string runShellCommand(const std::string& /*command*/) override { return ""; }
};

class Session {
 public:
  Session() { connect(); }

  void act(std::uint8_t kind, std::string_view bytes) {
    log_.clear();
    if (kind % 4 == 0 && !bytes.empty()) {
      receive(bytes);
    } else if (kind % 4 == 1) {
      connect();
    } else if (kind % 4 == 2) {
      fail(std::nullopt, platform::NWError::posix(111), "Error: NWError received");
    } else {
      fail(platform::Data(bytes.begin(), bytes.end()), std::nullopt, "Error: Received nil");
    }
  }

 private:
  void connect() {
    log_.clear();
    client_ = std::make_shared<FakeConnection>("[C1]");
    listener_->acceptConnection(client_);
    client_->report(Kind::ready);
    require(log_.records().size() == 2 && client_->armed() == 1);
  }

  /// An empty datagram is a failure too.
  void fail(std::optional<platform::Data> content, std::optional<platform::NWError> error,
            std::string_view line) {
    const bool isComplete = content && content->empty();
    client_->complete(std::move(content), isComplete, error);
    require(log_.records().size() == 1 && log_.records()[0].starts_with(line));
    require(client_->armed() == 0);
    connect();
  }

  void receive(std::string_view datagram) {
    const auto userBefore = listener_->xpcUser;
    client_->done.clear();
    client_->deliver(datagram);
    const auto& lines = log_.records();
    require(client_->armed() == 1 && std::ranges::all_of(lines, platform::isValidUtf8));
    if (datagram.starts_with("&*requestCU")) {
      require(lines == Lines{"request CU received, cu: " + userBefore, "Data was sent to UDP"});
      return require(client_->done == Lines{"send " + userBefore, "receive"});
    }
    require(client_->done == Lines{"receive"});
    if (datagram.starts_with("&*updateCU")) {
      require(lines.size() == 2 && lines[0].starts_with("update CU received, message: &*updateCU"));
      return require(lines[1] == " CU updated: " + listener_->xpcUser);
    }
    require(listener_->xpcUser == userBefore && lines.size() == 1);
    const auto size = std::to_string(datagram.size());
    require(lines[0].starts_with("got notification from Ext: ")
                ? lines[0] == "got notification from Ext: " + listener_->proxyStatus
            : datagram.starts_with("&*AL")
                ? lines[0].starts_with("Agent log: ")
                : lines[0].starts_with("got ") ||
                      lines[0] == "Received message is no command, " + size + " bytes");
  }

  quillet::test::LogCapture log_;
  const std::shared_ptr<Listener> listener_ = std::make_shared<Listener>();
  std::shared_ptr<FakeConnection> client_;
};

void run(platform::DataView input) {
  Session session;
  while (input.size() >= 3) {
    const std::uint8_t kind = input[0];
    const std::size_t length = std::min(input[1] * 256U + input[2] + 3UL, input.size());
    session.act(kind, platform::textOf(input.first(length)).substr(3));
    input = input.subspan(length);
  }
}

}  // namespace quillet::fuzz
