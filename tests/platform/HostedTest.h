#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/Description.h"
#include "platform/dispatch/MainLoop.h"
#include "platform/flowhost/FlowHost.h"
#include "platform/networkextension/NEDNSProxyProvider.h"
#include "tests/platform/UDPSocket.h"
#include "tests/support/LogCapture.h"

namespace platform::test {

using Flow = std::shared_ptr<NEAppProxyUDPFlow>;
using Texts = std::vector<std::string>;

/// Keeps what it is offered.
class FlowProvider final : public NEDNSProxyProvider {
 public:
  struct Offer {
    Flow flow;
    NWHostEndpoint asked;
  };
  std::vector<Offer> offers;

  void startProxy(std::optional<NEProviderOptions> /*options*/,
                  StartCompletion /*completion*/) override {}
  void stopProxy(NEProviderStopReason /*reason*/, StopCompletion /*completion*/) override {}
  void sleep(StopCompletion /*completion*/) override {}
  void wake() override {}
  bool handleNewUDPFlow(const Flow& flow, const NWHostEndpoint& initialRemoteEndpoint) override {
    offers.push_back({flow, initialRemoteEndpoint});
    return true;
  }
};

/// A host on ports of the test's own, its provider, and what a client and the provider do.
class HostedTest : public testing::Test {
 protected:
  void start(const std::vector<std::string>& hosts) {
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
    return SocketAddress::parse(host.empty() ? own : host,
                                static_cast<std::uint16_t>(std::stoi(port)))
        .value();
  }

  static void runReady() { MainLoop::shared().runReady(); }
  static bool runUntil(const std::function<bool()>& done) {
    return MainLoop::shared().runUntil(done);
  }
  Flow offered(std::size_t index) {
    EXPECT_TRUE(runUntil([&] { return provider_.offers.size() > index; }));
    return provider_.offers.at(index).flow;
  }
  /// The flow of a client that has asked the first listen address.
  Flow flowOf(const UDPSocket& client) {
    client.send("q", bound());
    return offered(provider_.offers.size());
  }

  /// What one read of the flow gives: a text and the endpoint it was sent to, for each datagram.
  static Texts read(const Flow& flow) {
    std::optional<Texts> texts;
    flow->readDatagrams([&](const auto& datagrams, const auto& endpoints, const auto& error) {
      texts.emplace();
      for (std::size_t i = 0; datagrams && i < datagrams->size(); ++i) {
        texts->push_back(std::string(textOf(datagrams->at(i))) + " to " +
                         description(endpoints->at(i)));
      }
      if (error) {
        texts->push_back(error->text());
      }
    });
    EXPECT_FALSE(texts);
    EXPECT_TRUE(runUntil([&] { return texts.has_value(); }));
    return texts.value_or(Texts{});
  }

  /// Writes and gives the error's text, "" for none.
  static std::string write(const Flow& flow, const Texts& texts,
                           std::vector<NWHostEndpoint> endpoints) {
    std::optional<std::string> outcome;
    std::vector<Data> datagrams;
    for (const auto& text : texts) {
      datagrams.push_back(bytes(text));
    }
    flow->writeDatagrams(std::move(datagrams), std::move(endpoints), [&](const auto& error) {
      EXPECT_FALSE(outcome);
      outcome = error ? error->text() : "";
    });
    EXPECT_FALSE(outcome);
    EXPECT_TRUE(runUntil([&] { return outcome.has_value(); }));
    return outcome.value_or("nothing");
  }
  /// Answers from the address that was asked.
  std::string answer(std::size_t offer, const std::string& text) {
    const auto& [flow, asked] = provider_.offers.at(offer);
    return write(flow, {text}, {asked});
  }

  quillet::test::LogCapture log_;
  FlowProvider provider_;
  std::unique_ptr<FlowHost> host_;
};

}  // namespace platform::test
