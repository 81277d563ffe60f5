#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DnsProxyExt/upstream/UpstreamExchange.h"
#include "platform/dispatch/MainLoop.h"
#include "tests/support/FakeFlow.h"
#include "tests/support/FakeServer.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Wire.h"

namespace quillet {
namespace {

TEST(UpstreamExchange, HandsOnTheErrorAndLetsGoOfTheHandler) {
  const test::LogCapture log;
  const auto flow =
      std::make_shared<test::FakeFlow>(7, std::vector<platform::Data>{test::query("a")});
  const Utils::DNSHost nobody("127.0.0.1:" + std::to_string(test::closedPort()));
  std::vector<std::string> told;
  auto held = std::make_shared<int>();
  const std::weak_ptr<int> handler = held;
  exchangeOverUDP(
      Batch::from(flow, flow->toRead, flow->readEndpoints), nobody,
      [&told, held = std::move(held)](const Answer& answer) {
        told.push_back(answer.endpoint.port + " " + platform::description(answer.error));
      });
  ASSERT_TRUE(platform::MainLoop::shared().runUntil([&] { return handler.expired(); }));
  EXPECT_THAT(told, testing::ElementsAre(
                        "5300 Optional(POSIXErrorCode(rawValue: 111): Connection refused)"));
}

}  // namespace
}  // namespace quillet
