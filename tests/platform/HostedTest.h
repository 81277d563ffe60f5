#pragma once

#include "platform/flowhost/FlowHost.h"
#include "platform/networkextension/NEDNSProxyProvider.h"
#include "platform/udp/OwnSockets.h"
#include "tests/platform/SocketFailures.h"
#include "tests/platform/Test.h"

namespace platform::test {

using Flow = std::shared_ptr<NEAppProxyUDPFlow>;

/// Keeps what it is offered.
struct FlowProvider final : NEDNSProxyProvider {
  void startProxy(std::optional<NEProviderOptions>, StartCompletion) override {}
  void stopProxy(NEProviderStopReason, StopCompletion) override {}
  void sleep(StopCompletion) override {}
  void wake() override {}
  bool handleNewUDPFlow(const Flow& flow, const NWHostEndpoint& destination) override {
    flows.push_back(flow);
    destinations.push_back(destination);
    return true;
  }

  std::vector<Flow> flows;
  std::vector<NWHostEndpoint> destinations;
};

/// A host on ports of the system's choice, its provider, and what the provider does.
class HostedTest : public testing::Test {
 protected:
  void start(const Texts& hosts) {
    FlowHostOptions options;
    for (const auto& host : hosts) {
      options.listen.push_back({host, "0"});
    }
    host_ = FlowHost::bind(options).value();
    ASSERT_EQ(host_->serve(provider_), std::nullopt);
  }
  NWHostEndpoint endpoint(std::size_t index = 0) { return host_->boundEndpoints().at(index); }
  /// The address that a listen address has, or another one of the same port.
  SocketAddress bound(std::size_t index = 0, const std::string& host = "") {
    const auto [own, port] = endpoint(index);
    return address(host.empty() ? own : host, static_cast<std::uint16_t>(std::stoi(port)));
  }
  Flow offered(std::size_t index) {
    EXPECT_TRUE(runUntilSize(provider_.flows, index + 1));
    return provider_.flows.at(index);
  }

  /// What one read of the flow gives: a text and its destination, for each datagram.
  static Texts read(const Flow& flow) {
    std::optional<Texts> texts;
    flow->readDatagrams([&](const auto& datagrams, const auto& endpoints, const auto& error) {
      texts = error ? Texts{error->text()} : Texts();
      for (std::size_t i = 0; datagrams && i < datagrams->size(); ++i) {
        texts->push_back(std::string(textOf(datagrams->at(i))) + " to " +
                         description(endpoints->at(i)));
      }
    });
    EXPECT_TRUE(runUntil([&] { return texts.has_value(); }));
    return texts.value_or(Texts{});
  }
  /// Writes and gives the error's text, "" for none.
  static auto write(const Flow& flow, const Texts& texts, std::vector<NWHostEndpoint> endpoints) {
    std::string outcome = "nothing";
    std::vector<Data> datagrams;
    std::ranges::transform(texts, std::back_inserter(datagrams), bytes);
    flow->writeDatagrams(std::move(datagrams), std::move(endpoints), [&](const auto& error) {
      EXPECT_EQ(std::exchange(outcome, error ? error->text() : ""), "nothing");
    });
    EXPECT_EQ(outcome, "nothing");
    EXPECT_TRUE(runUntil([&] { return outcome != "nothing"; }));
    return outcome;
  }
  std::string answer(std::size_t index, const std::string& text) {
    const auto flow = offered(index);
    return write(flow, {text}, {provider_.destinations.at(index)});
  }

  LogCapture log_;
  FlowProvider provider_;
  std::unique_ptr<FlowHost> host_;
};

}  // namespace platform::test
