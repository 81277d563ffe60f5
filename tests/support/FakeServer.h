#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/dispatch/DispatchQueue.h"
#include "platform/dispatch/SocketEvents.h"
#include "tests/platform/Socket.h"

namespace quillet::test {

/// A UDP server on 127.0.0.1 that the main loop runs. It keeps what it receives, and sends back
/// what `answer` makes of it.
class FakeServer final : platform::SocketWatcher {
 public:
  /// Gives the datagrams that go back for one that came.
  using Answer = std::function<std::vector<platform::Data>(const platform::Data&)>;

  explicit FakeServer(Answer answer) : answer_(std::move(answer)) {
    events_.watch(socket_.descriptor(), *this, {true, false}, false);
  }
  ~FakeServer() { events_.stopWatching(socket_.descriptor()); }

  [[nodiscard]] std::int64_t port() const { return socket_.port(); }
  /// `127.0.0.1:40123`.
  [[nodiscard]] std::string text() const { return "127.0.0.1:" + std::to_string(port()); }
  [[nodiscard]] const std::vector<platform::Data>& received() const { return received_; }
  /// What the server answers from now on.
  void setAnswer(Answer answer) { answer_ = std::move(answer); }

 private:
  void socketIsReady(bool /*canRead*/, bool /*canWrite*/) override {
    while (const auto datagram = socket_.receive()) {
      received_.push_back(platform::test::bytes(datagram->text));
      for (const auto& reply : answer_(received_.back())) {
        socket_.send(std::string(platform::textOf(reply)), datagram->from);
      }
    }
  }

  const platform::test::UDPSocket socket_;
  platform::SocketEvents& events_ = platform::DispatchQueue::global().socketEvents();
  Answer answer_;
  std::vector<platform::Data> received_;
};

/// Answers nothing.
inline std::vector<platform::Data> stayQuiet(const platform::Data& /*received*/) { return {}; }

}  // namespace quillet::test
