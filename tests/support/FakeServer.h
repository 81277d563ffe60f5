#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/UDPSocket.h"

namespace quillet::test {

/// A UDP server on a loopback address, on a thread of its own. It keeps what it
/// receives, wakes the main loop, and sends back what `answer` makes of it.
class FakeServer {
 public:
  /// Gives the datagrams that go back for one that came.
  using Answer = std::function<std::vector<platform::Data>(const platform::Data&)>;

  /// Port 0 is one of the system's choice.
  explicit FakeServer(Answer answer, const char* address = "127.0.0.1", std::int64_t port = 0);
  ~FakeServer();
  FakeServer(const FakeServer&) = delete;
  FakeServer& operator=(const FakeServer&) = delete;

  [[nodiscard]] std::int64_t port() const { return socket_.port(); }
  /// `127.0.0.1:40123`.
  [[nodiscard]] std::string text() const { return address_ + ":" + std::to_string(port()); }
  [[nodiscard]] std::vector<platform::Data> received() const;
  /// What the server answers from now on.
  void setAnswer(Answer answer);

 private:
  void serve();

  const std::string address_;
  const platform::test::UDPSocket socket_;
  std::atomic<bool> isStopping_{false};
  mutable std::mutex mutex_;
  Answer answer_;                         // guarded by mutex_
  std::vector<platform::Data> received_;  // guarded by mutex_
  std::thread thread_;
};

/// Answers nothing.
std::vector<platform::Data> stayQuiet(const platform::Data& received);

/// A port on 127.0.0.1 that nobody listens on.
std::int64_t closedPort();

}  // namespace quillet::test
