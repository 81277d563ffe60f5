#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/dispatch/MainLoop.h"
#include "platform/flowhost/FlowHost.h"
#include "platform/foundation/Description.h"
#include "tests/platform/FlowProvider.h"
#include "tests/platform/TemporaryDirectory.h"
#include "tests/platform/UDPSocket.h"
#include "tests/support/LogCapture.h"

namespace platform::test {

using Flow = std::shared_ptr<NEAppProxyUDPFlow>;
using Texts = std::vector<std::string>;

inline SocketAddress addressOf(const NWHostEndpoint& endpoint) {
  const auto port = static_cast<std::uint16_t>(std::stoi(endpoint.port));
  return SocketAddress::parse(endpoint.hostname, port).value();
}

/// A host on ports of the test's own, its provider, and what a client and the provider do.
class HostedTest : public testing::Test {
 protected:
  void start(const std::vector<std::string>& hosts) {
    FlowHostOptions options;
    for (const auto& host : hosts) {
      options.listen.push_back({host, "0"});
    }
    options.sourceApp = "com.example.app";
    options.resolvConf = directory_.path() / "resolv.conf";
    options.resolverPort = resolverPort_;
    auto host = FlowHost::start(provider_, options);
    ASSERT_TRUE(host) << host.error().text();
    host_ = *std::move(host);
  }
  SocketAddress bound(std::size_t index = 0) {
    return addressOf(host_->boundEndpoints().at(index));
  }

  static void runReady() { MainLoop::shared().runReady(); }
  static bool runUntil(const std::function<bool()>& done) {
    return MainLoop::shared().runUntil(done);
  }
  Flow offered(std::size_t index) {
    EXPECT_TRUE(runUntil([&] { return provider_.offers.size() > index; }));
    return provider_.offers.at(index).flow;
  }

  /// What one read of the flow gives: a text and the endpoint it was sent to, for each datagram.
  static Texts read(const Flow& flow) {
    Texts texts;
    bool isDone = false;
    flow->readDatagrams([&](const auto& datagrams, const auto& endpoints, const auto& error) {
      isDone = true;
      if (error) {
        texts.push_back(error->text());
        return;
      }
      EXPECT_EQ(datagrams->size(), endpoints->size());
      for (std::size_t i = 0; i < datagrams->size(); ++i) {
        texts.push_back(std::string(textOf(datagrams->at(i))) + " to " +
                        description(endpoints->at(i)));
      }
    });
    EXPECT_FALSE(isDone);
    EXPECT_TRUE(runUntil([&] { return isDone; }));
    return texts;
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
  std::string answer(const Flow& flow, const std::string& text) {
    for (const auto& offer : provider_.offers) {
      if (offer.flow == flow) {
        return write(flow, {text}, {offer.asked});
      }
    }
    return "no such flow";
  }

  quillet::test::LogCapture log_;
  TemporaryDirectory directory_;
  std::uint16_t resolverPort_ = 53;
  FlowProvider provider_;
  std::unique_ptr<FlowHost> host_;
};

}  // namespace platform::test
