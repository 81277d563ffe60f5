#pragma once

#include "DnsProxyExt/registry/FlowManager.h"
#include "DnsProxyExt/relay/RelayLog.h"
#include "DnsProxyExt/routing/MappedDomains.h"
#include "DnsProxyExt/routing/RoutingTable.h"
#include "platform/base/Clock.h"
#include "tests/support/FakeFlow.h"
#include "tests/support/Test.h"

namespace quillet::test {

/// What a stage stands on: a log, a clock that stands still, a registry, a link that is not
/// connected. No provider and no socket.
class StageTest : public testing::Test {
 protected:
  using Error = platform::Error;

  StageTest() { platform::Clock::setShared(&clock_); }
  ~StageTest() override { platform::Clock::setShared(nullptr); }

  /// A flow that the registry knows.
  std::shared_ptr<FakeFlow> add(std::int64_t key, std::vector<Data> datagrams = {},
                                const char* app = "com.example.app") {
    auto flow = std::make_shared<FakeFlow>(key, std::move(datagrams), app);
    EXPECT_FALSE(registry_.addFlowIfNew(flow));
    log_.clear();
    return flow;
  }
  [[nodiscard]] const ManagedFlow& recordOf(const std::shared_ptr<FakeFlow>& flow) const {
    return *registry_.find(*flow);
  }

  LogCapture log_;
  platform::ManualClock clock_{1'700'000'000'123'000};
  FlowManager registry_;
  const RelayLog relayLog_{std::make_shared<XpcUdpHelper>()};
};

/// An answer to `query("a")`: one A record 1.2.3.4, the owner name compressed.
inline Data answerForA() {
  return hex(
      "12 34 81 80 00 01 00 01 00 00 00 00 01 61 00 00 01 00 01"
      "c0 0c 00 01 00 01 00 00 00 3c 00 04 01 02 03 04");
}

inline DNSHostRef hostAt(const std::string& text) { return std::make_shared<Utils::DNSHost>(text); }

/// The records, a line each.
inline std::string linesOf(const Texts& records) {
  std::string lines;
  for (const auto& record : records) {
    lines.append(record).append("\n");
  }
  return lines;
}

}  // namespace quillet::test
