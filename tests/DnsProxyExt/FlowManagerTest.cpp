#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DnsProxyExt/FlowManager.h"
#include "platform/foundation/Clock.h"
#include "tests/support/FakeFlow.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Wire.h"

namespace quillet {
namespace {

using platform::Data;
using test::FakeFlow;
using testing::ElementsAre;

class FlowManagerTest : public testing::Test {
 protected:
  FlowManagerTest() { platform::Clock::setShared(&clock_); }
  ~FlowManagerTest() override { platform::Clock::setShared(nullptr); }

  std::shared_ptr<FakeFlow> add(std::int64_t key, const char* app = "com.example.app") {
    auto flow = std::make_shared<FakeFlow>(key, std::vector<Data>(), app);
    EXPECT_FALSE(manager_.addFlowIfNew(flow));
    return flow;
  }

  std::vector<std::string> report(const ReportSettings& settings) {
    log_.clear();
    manager_.printFlowReport(settings);
    return log_.records();
  }

  test::LogCapture log_;
  platform::ManualClock clock_{1'000'000'000'000};
  FlowManager manager_;
};

TEST_F(FlowManagerTest, RecordsErrorsAndTheEnd) {
  const auto flow = add(7);
  clock_.advanceSeconds(2.5);
  manager_.addErrorToFlow(*flow, ErrorBreakpoint::readingFlow);
  manager_.flowWasHandled(*flow, "nil");
  const auto* record = manager_.find(*flow);
  ASSERT_NE(record, nullptr);
  EXPECT_THAT(
      record->errors,
      ElementsAre("--> error: timestamp: 1000002.5 in 2.5 after start handling, breakboint: 5",
                  "nil"));
  EXPECT_TRUE(record->isFinished);
  EXPECT_EQ(record->endTimestamp, 1'000'002.5);
}

TEST_F(FlowManagerTest, SaysSoWhenAFlowIsNotRegistered) {
  manager_.addErrorToFlow(FakeFlow(1), ErrorBreakpoint::upstream);
  manager_.flowWasHandled(FakeFlow(1), "nil");
  manager_.addRequest(FakeFlow(1), {Data(12)}, {});
  EXPECT_THAT(log_.records(), ElementsAre("***Critical: FlowManager -> addErrorToFlow is nil",
                                          "***Critical: FlowManager -> flowWasHandled is nil"));
}

TEST_F(FlowManagerTest, ReportsEveryFlow) {
  const auto open = add(1);
  const auto done = add(2);
  const auto answer = test::hex(
      "12 34 81 80 00 01 00 01 00 00 00 00 01 61 00 00 01 00 01"
      "c0 0c 00 01 00 01 00 00 00 3c 00 04 01 02 03 04");
  manager_.addRequest(*done, {answer, Data(3)},
                      {*DnsToolsSocket::Message::deserialize(answer), {}});
  clock_.advanceSeconds(0.25);
  manager_.flowWasHandled(*done, "nil");
  EXPECT_THAT(
      report({}),
      ElementsAre("----> start of flow manager report <----",
                  "Report settings - package: nil, tf: nil, detailed:  false", "flow hash is 1",
                  "->flow 1, isFinished: false, senderId: com.example.app,  delay: 0.0, url: "
                  "reqMessages is empty, errors: []",
                  "time from now = 0.25", "rawReqData: count = nil, raw: nil", "flow hash is 2",
                  "->flow 2, isFinished: true, senderId: com.example.app,  delay: 0.25, url: a., "
                  "errors: [\"nil\"]",
                  "rawReqData: count = Optional(2), raw: Optional([35 bytes, 3 bytes])",
                  "----< end of flow manager report >----"));
}

TEST_F(FlowManagerTest, ReportsWhatTheSettingsAskFor) {
  add(1, "com.apple.Safari");
  clock_.advanceSeconds(60);
  add(2, "org.mozilla.firefox");
  clock_.advanceSeconds(10);
  const auto shown = [this](const ReportSettings& settings) {
    std::vector<std::string> keys;
    for (const auto& record : report(settings)) {
      if (record.starts_with("flow hash is ")) {
        keys.push_back(record.substr(13));
      }
    }
    return keys;
  };
  EXPECT_THAT(shown({.forLastSecs = 10}), ElementsAre("2"));
  EXPECT_THAT(shown({.forLastSecs = 70}), ElementsAre("1", "2"));
  EXPECT_THAT(shown({.forLastSecs = 9}), ElementsAre());
  EXPECT_THAT(shown({.package = "sAFARi"}), ElementsAre("1"));
  EXPECT_THAT(shown({.forLastSecs = 10, .package = "safari"}), ElementsAre());
  EXPECT_THAT(
      report({.package = "safari", .detailed = true}),
      testing::Contains("flow 1 detailed, isBound: false, localEndpoint: "
                        "Optional(127.0.0.1:40000), remoteHostname: Optional(\"127.0.0.1\"), "
                        "nettworkInterface: nil"));
}

TEST_F(FlowManagerTest, DropsTheFlowThatFinishedFirst) {
  const auto first = add(1);
  const auto second = add(2);
  manager_.flowWasHandled(*second, "nil");
  manager_.flowWasHandled(*first, "nil");
  for (std::int64_t key = 3; key < 2 + static_cast<std::int64_t>(FlowManager::kMaxFinished);
       ++key) {
    manager_.flowWasHandled(*add(key), "nil");
  }
  EXPECT_EQ(manager_.flows().size(), FlowManager::kMaxFinished);
  EXPECT_EQ(manager_.find(*second), nullptr);
  EXPECT_NE(manager_.find(*first), nullptr);
}

TEST_F(FlowManagerTest, DropsTheOldestFlowThatIsNeverAnswered) {
  manager_.flowWasHandled(*add(1), "nil");
  const auto oldest = add(2);
  for (std::int64_t key = 3; key < 3 + static_cast<std::int64_t>(FlowManager::kMaxUnfinished);
       ++key) {
    add(key);
  }
  EXPECT_EQ(manager_.flows().size(), FlowManager::kMaxUnfinished + 1);
  EXPECT_EQ(manager_.find(*oldest), nullptr);
  EXPECT_NE(manager_.find(FakeFlow(1)), nullptr);
}

TEST_F(FlowManagerTest, BoundsWhatQueriesTake) {
  constexpr std::int64_t kFlows = 200;
  for (std::int64_t key = 1; key <= kFlows; ++key) {
    const auto flow = add(key);
    manager_.addRequest(*flow, {Data(65'507)}, {std::nullopt});
    if (key % 2 == 0) {
      manager_.flowWasHandled(*flow, "nil");
    }
  }
  std::size_t cost = 0;
  for (const auto& [key, record] : manager_.flows()) {
    cost += record->cost();
  }
  EXPECT_LE(cost, FlowManager::kMaxCost);
  EXPECT_GT(cost, FlowManager::kMaxCost / 2);
}

}  // namespace
}  // namespace quillet
