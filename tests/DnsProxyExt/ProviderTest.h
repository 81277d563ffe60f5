#pragma once

#include "DnsProxyExt/DnsProxyExt.h"
#include "platform/dispatch/MainLoop.h"
#include "platform/network/OpenConnections.h"
#include "tests/DnsProxyExt/StageTest.h"
#include "tests/platform/EnvironmentVariable.h"
#include "tests/support/DefaultsFolder.h"
#include "tests/support/FakeServer.h"

namespace quillet::test {

/// A started provider with user defaults and a relay service of its own.
class ProviderTest : public StageTest {
 protected:
  ProviderTest() {
    MDMConfigurationManager::shared() = MDMConfigurationManager();
    provider_->xpcUdpHelper->relayPort = static_cast<std::uint16_t>(relay_.port());
    startWith(std::nullopt);
    runReady();
  }
  ~ProviderTest() override {
    provider_->stopProxy(platform::NEProviderStopReason::kNone, [] {});
    while (platform::OpenConnections::shared().cancelIdleLongest()) {
    }
    runReady();
    runReady();
  }

  void start(platform::JSONValue vendorData) {
    platform::NEProviderOptions options;
    options.emplace("VendorData", std::move(vendorData));
    startWith(std::move(options));
  }
  void startWith(std::optional<platform::NEProviderOptions> options) {
    int completions = 0;
    provider_->startProxy(std::move(options), [&](const std::optional<platform::Error>& error) {
      EXPECT_EQ(error, std::nullopt);
      ++completions;
    });
    EXPECT_EQ(completions, 1);
  }

  static std::shared_ptr<FakeFlow> makeFlow(std::vector<Data> datagrams,
                                            const char* app = "com.example.app") {
    static std::int64_t lastKey = 100;
    return std::make_shared<FakeFlow>(++lastKey, std::move(datagrams), app);
  }

  bool offer(const std::shared_ptr<FakeFlow>& flow) {
    return provider_->handleNewUDPFlow(flow, {"127.0.0.1", "5300"});
  }

  /// Offers the flow and waits until the provider has closed both sides of it.
  void serve(const std::shared_ptr<FakeFlow>& flow) {
    ASSERT_TRUE(offer(flow));
    ASSERT_TRUE(runUntil([&] { return flow->closed.size() == 2; })) << "the flow is not closed";
  }

  static bool runUntil(const std::function<bool()>& done) {
    return platform::MainLoop::shared().runUntil(done);
  }
  static void runReady() { platform::MainLoop::shared().runReady(); }

  /// The payloads of the commands that the relay service has received so far, once there are
  /// `count`.
  Texts relayed(std::size_t count) {
    EXPECT_TRUE(runUntil([&] { return relay_.received().size() >= count; }));
    Texts payloads;
    for (const auto& datagram : relay_.received()) {
      payloads.push_back(XpcUdpCommandParser::decodeCommand(datagram).value().payload);
    }
    return payloads;
  }

  /// How often the log holds `record`.
  [[nodiscard]] std::ptrdiff_t count(const std::string& record) const {
    return std::count(log_.records().begin(), log_.records().end(), record);
  }
  bool runUntilLogged(const std::string& record) {
    return runUntil([&] { return count(record) > 0; });
  }

  /// The log without what the command link says of its own sends.
  [[nodiscard]] Texts records() const {
    auto result = log_.records();
    std::erase(result, "*Xpc Udp Data was sent to UDP*");
    return result;
  }

  /// Where nobody answers.
  static DNSHostRef nobody() { return hostAt(description(platform::test::UDPSocket().address())); }

  const platform::test::EnvironmentVariable zone_{"TZ", "Europe/Ljubljana"};
  DefaultsFolder defaults_;
  FakeServer relay_{stayQuiet};
  std::shared_ptr<DnsProxyExt> provider_ = std::make_shared<DnsProxyExt>();
};

/// What a server that answers every query with it does.
inline std::vector<Data> answerA(const Data& /*received*/) { return {answerForA()}; }

}  // namespace quillet::test
