#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/networkextension/NEDNSProxyProvider.h"

namespace platform::test {

/// A provider that keeps what it is offered and decides as a test says.
class FlowProvider final : public NEDNSProxyProvider {
 public:
  struct Offer {
    std::shared_ptr<NEAppProxyUDPFlow> flow;
    NWHostEndpoint asked;
  };

  std::vector<Offer> offers;
  /// Whether it takes the flow; it takes all without.
  std::function<bool()> decision;

  void startProxy(std::optional<NEProviderOptions> /*options*/,
                  StartCompletion /*completion*/) override {}
  void stopProxy(NEProviderStopReason /*reason*/, StopCompletion /*completion*/) override {}
  void sleep(StopCompletion /*completion*/) override {}
  void wake() override {}

  bool handleNewUDPFlow(const std::shared_ptr<NEAppProxyUDPFlow>& flow,
                        const NWHostEndpoint& initialRemoteEndpoint) override {
    offers.push_back({flow, initialRemoteEndpoint});
    return !decision || decision();
  }
};

}  // namespace platform::test
