#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/base/Description.h"
#include "platform/dispatch/MainLoop.h"
#include "platform/network/NWConnection.h"
#include "platform/network/OpenConnections.h"
#include "tests/platform/UDPSocket.h"

namespace platform::test {

using Connection = std::shared_ptr<NWConnection>;
using Lines = std::vector<std::string>;

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
    connection->stateUpdateHandler = [this, name](const NWConnection::State& state) {
      lines_.push_back(name + description(state));
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
    connection->send(bytes(text), [this, text](const std::optional<NWError>& error) {
      lines_.push_back("sent " + text + (error ? " " + description(*error) : ""));
    });
  }
  void receive(const Connection& connection, const std::string& name = "") {
    connection->receiveMessage([this, name](const std::optional<Data>& content, bool isComplete,
                                            const std::optional<NWError>& error) {
      EXPECT_EQ(content.has_value(), !error.has_value());
      EXPECT_EQ(isComplete, content.has_value());
      lines_.push_back(name + "got " +
                       (content ? std::string(textOf(*content)) : description(*error)));
    });
  }

  static void runReady() { MainLoop::shared().runReady(); }
  bool runUntilLines(std::size_t count) {
    return MainLoop::shared().runUntil([&] { return lines_.size() >= count; });
  }

  Lines lines_;
};

}  // namespace platform::test
