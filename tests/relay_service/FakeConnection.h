#pragma once

#include "platform/base/Description.h"
#include "relay_service/UDPListener.h"

namespace QuilletXPCservice::test {

/// A client's association whose states, datagrams and errors a test chooses; what is done with it
/// is one line each.
struct FakeConnection final : platform::NWConnection {
  void start(platform::DispatchQueue /*queue*/) override { done.emplace_back("start"); }
  void send(platform::Data content, SendCompletion completion) override {
    done.push_back("send " + std::string(platform::textOf(content)));
    completion(sendError);
  }
  void receiveMessage(ReceiveCompletion completion) override {
    done.emplace_back("receive");
    receives.push_back(std::move(completion));
  }
  void cancel() override { done.emplace_back("cancel"); }
  [[nodiscard]] std::optional<platform::NWPath> currentPath() const override { return {}; }
  [[nodiscard]] State state() const override { return {}; }
  void describe(std::string& out) const override { out.append("[C1]"); }

  void report(State::Kind kind) { stateUpdateHandler({kind, std::nullopt}); }
  [[nodiscard]] std::size_t armed() const { return receives.size(); }

  /// Completes the oldest receive, with a datagram or otherwise.
  void deliver(std::string_view datagram) {
    complete(platform::Data(datagram.begin(), datagram.end()), true, std::nullopt);
  }
  void complete(std::optional<platform::Data> content, bool isComplete,
                std::optional<platform::NWError> error) {
    const auto completion = receives.at(0);
    receives.erase(receives.begin());
    completion(std::move(content), isComplete, error);
  }

  std::vector<std::string> done;
  std::vector<ReceiveCompletion> receives;
  std::optional<platform::NWError> sendError;
};

/// Its flush runs nothing, but keeps who was its client then.
struct Listener final : UDPListener {
  Listener() : UDPListener({"", "flush"}) {}

  std::string runShellCommand(const std::string& /*command*/) override {
    clientAtFlush = connection.get();
    return "";
  }

  const platform::NWConnection* clientAtFlush = nullptr;
};

}  // namespace QuilletXPCservice::test
