#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/base/Description.h"
#include "platform/network/NWConnection.h"

namespace QuilletXPCservice::test {

/// A client's association whose states, datagrams and errors a test chooses; what is done with it
/// is one line each.
class FakeConnection final : public platform::NWConnection {
 public:
  explicit FakeConnection(std::string name) : name_(std::move(name)) {}

  void start(platform::DispatchQueue /*queue*/) override { done.emplace_back("start"); }
  void send(platform::Data content, SendCompletion completion) override {
    done.push_back("send " + std::string(platform::textOf(content)));
    completion(sendError);
  }
  void receiveMessage(ReceiveCompletion completion) override {
    done.emplace_back("receive");
    armed_.push_back(std::move(completion));
  }
  void cancel() override { done.emplace_back("cancel"); }
  [[nodiscard]] std::optional<platform::NWPath> currentPath() const override {
    return std::nullopt;
  }
  [[nodiscard]] State state() const override { return {}; }
  void describe(std::string& out) const override { out.append(name_); }

  void report(State::Kind kind) { stateUpdateHandler({kind, std::nullopt}); }
  [[nodiscard]] std::size_t armed() const { return armed_.size(); }

  /// Completes the oldest receive, with a datagram or otherwise.
  void deliver(std::string_view datagram) {
    const auto bytes = platform::bytesOf(datagram);
    complete(platform::Data(bytes.begin(), bytes.end()), true, std::nullopt);
  }
  void complete(std::optional<platform::Data> content, bool isComplete,
                std::optional<platform::NWError> error) {
    const auto completion = std::move(armed_.at(0));
    armed_.erase(armed_.begin());
    completion(std::move(content), isComplete, error);
  }

  std::vector<std::string> done;
  std::optional<platform::NWError> sendError;

 private:
  const std::string name_;
  std::vector<ReceiveCompletion> armed_;
};

}  // namespace QuilletXPCservice::test
