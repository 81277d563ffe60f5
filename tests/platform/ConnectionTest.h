#pragma once

#include "platform/network/NWConnection.h"
#include "platform/network/OpenConnections.h"
#include "tests/platform/Test.h"

namespace platform::test {

using Connection = std::shared_ptr<NWConnection>;

/// Everything that connections say goes into one list of lines.
class ConnectionTest : public testing::Test {
 protected:
  ~ConnectionTest() override {
    auto& open = OpenConnections::shared();
    while (open.cancelIdleLongest()) {
    }
    open.setLimit(OpenConnections::usualLimit());
    runReady();
  }

  Connection make(const std::string& host, std::uint16_t port, const std::string& name = "") {
    auto connection = NWConnection::create(NWEndpoint::Host(host), NWEndpoint::Port(port));
    connection->stateUpdateHandler = [=, this](const auto& state) {
      say(name + description(state));
    };
    return connection;
  }
  Connection started(const std::string& host, std::uint16_t port, const std::string& name = "") {
    auto connection = make(host, port, name);
    connection->start(DispatchQueue::global());
    return connection;
  }
  /// A connection that is ready, its states forgotten.
  Connection readyTo(std::uint16_t port, const std::string& name = "",
                     const std::string& host = "127.0.0.1") {
    auto connection = started(host, port, name);
    runReady();
    EXPECT_EQ(description(connection->state()), "ready");
    lines_.clear();
    return connection;
  }

  void send(const Connection& connection, const std::string& text) {
    connection->send(bytes(text), [this, text](const auto& error) {
      say("sent " + text + (error ? " " + description(*error) : ""));
    });
  }
  void receive(const Connection& connection, const std::string& name = "") {
    connection->receiveMessage(
        [this, name](const auto& content, bool isComplete, const auto& error) {
          EXPECT_EQ(isComplete, content && !error);
          say(name + "got " + (content ? std::string(textOf(*content)) : description(*error)));
        });
  }

  Texts lines_;
  std::function<void(const std::string&)> onLine_ = [](const std::string& /*line*/) {};

 private:
  void say(const std::string& line) {
    lines_.push_back(line);
    onLine_(line);
  }
};

}  // namespace platform::test
