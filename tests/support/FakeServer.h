#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/foundation/Data.h"

namespace quillet::test {

/// A UDP server on a loopback port of the system's choice, on a thread of its own. It keeps what it
/// receives and sends back what `answer` makes of it.
class FakeServer {
 public:
  /// Gives the datagrams that go back for one that came.
  using Answer = std::function<std::vector<platform::Data>(const platform::Data&)>;

  explicit FakeServer(Answer answer, const char* address = "127.0.0.1");
  ~FakeServer();
  FakeServer(const FakeServer&) = delete;
  FakeServer& operator=(const FakeServer&) = delete;

  [[nodiscard]] std::int64_t port() const { return port_; }
  /// `127.0.0.1:40123`.
  [[nodiscard]] std::string text() const { return address_ + ":" + std::to_string(port_); }
  [[nodiscard]] std::vector<platform::Data> received() const;

 private:
  void serve();

  const Answer answer_;
  const std::string address_;
  int socket_ = -1;
  std::int64_t port_ = 0;
  mutable std::mutex mutex_;
  std::vector<platform::Data> received_;  // guarded by mutex_
  std::thread thread_;
};

/// A port on 127.0.0.1 that nobody listens on.
std::int64_t closedPort();

}  // namespace quillet::test
