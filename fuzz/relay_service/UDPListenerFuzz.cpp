// The receive path of the relay as a whole: bytes in, log lines and replies out. The input is a run
// of events, each a byte for its kind, two for its length (big-endian), and its bytes: a datagram,
// a new client, a receive error or an incomplete receive. Every datagram leaves the lines of its
// kind; one receive is armed after it, none after an error; a reply is the user value, byte for
// byte.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/Require.h"
#include "platform/base/Utf8.h"
#include "relay_service/UDPListener.h"
#include "tests/relay_service/FakeConnection.h"
#include "tests/support/LogCapture.h"

namespace {

using quillet::fuzz::require;
using QuilletXPCservice::UDPListener;
using QuilletXPCservice::test::FakeConnection;
using Kind = platform::NWConnection::State::Kind;
using Lines = std::vector<std::string>;

class Listener final : public UDPListener {
 public:
  std::string runShellCommand(const std::string& /*command*/) override { return ""; }
};

class Session {
 public:
  Session() { connect(); }

  void act(std::uint8_t kind, std::string_view bytes) {
    log_.clear();
    switch (kind % 4) {
      case 0:
        receive(bytes);
        break;
      case 1:
        connect();
        break;
      case 2:
        fail(std::nullopt, false, platform::NWError::posix(111), "Error: NWError received");
        break;
      default:
        fail(platform::Data(bytes.begin(), bytes.end()), false, std::nullopt,
             "Error: Received nil");
    }
  }

 private:
  void connect() {
    log_.clear();
    client_ = std::make_shared<FakeConnection>();
    listener_->acceptConnection(client_);
    client_->report(Kind::ready);
    require(log_.records().size() == 2 && client_->armed() == 1);
  }

  void fail(std::optional<platform::Data> content, bool isComplete,
            std::optional<platform::NWError> error, std::string_view line) {
    client_->complete(std::move(content), isComplete, error);
    require(log_.records().size() == 1 && log_.records()[0].starts_with(line));
    require(client_->armed() == 0);
    connect();
  }

  void receive(std::string_view datagram) {
    if (datagram.empty()) {
      fail(platform::Data{}, true, std::nullopt, "Error: Received nil");
      return;
    }
    const auto userBefore = listener_->xpcUser;
    client_->done.clear();
    client_->deliver(datagram);
    require(client_->armed() == 1);
    for (const auto& line : log_.records()) {
      require(platform::isValidUtf8(line));
    }
    check(datagram, log_.records(), userBefore);
  }

  void check(std::string_view datagram, const Lines& lines, const std::string& userBefore) {
    const bool isRequest = datagram.starts_with("&*requestCU");
    const bool isUpdate = datagram.starts_with("&*updateCU");
    require(isUpdate || listener_->xpcUser == userBefore);
    if (isRequest) {
      require(lines == Lines{"request CU received, cu: " + userBefore, "Data was sent to UDP"});
      require(client_->done == Lines{"send " + userBefore, "receive"});
      return;
    }
    require(client_->done == Lines{"receive"});
    if (isUpdate) {
      require(lines.size() == 2 && lines[0].starts_with("update CU received, message: &*updateCU"));
      require(lines[1] == " CU updated: " + listener_->xpcUser);
      return;
    }
    require(lines.size() == 1);
    if (datagram.starts_with("&*AL")) {
      require(lines[0].starts_with("Agent log: "));
    } else if (!lines[0].starts_with("got ")) {
      require(lines[0] ==
              "Received message is no command, " + std::to_string(datagram.size()) + " bytes");
    } else if (lines[0].starts_with("got notification from Ext: ")) {
      require(lines[0] == "got notification from Ext: " + listener_->proxyStatus);
    }
  }

  quillet::test::LogCapture log_;
  const std::shared_ptr<Listener> listener_ = std::make_shared<Listener>();
  std::shared_ptr<FakeConnection> client_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kHeader = 3;
  auto rest = platform::textOf({data, size});
  Session session;
  while (rest.size() >= kHeader) {
    const auto kind = static_cast<std::uint8_t>(rest[0]);
    const auto length = static_cast<std::size_t>(static_cast<std::uint8_t>(rest[1])) << 8 |
                        static_cast<std::uint8_t>(rest[2]);
    rest.remove_prefix(kHeader);
    const auto bytes = rest.substr(0, length);
    rest.remove_prefix(bytes.size());
    session.act(kind, bytes);
  }
  return 0;
}
