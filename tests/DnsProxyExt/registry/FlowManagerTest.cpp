#include "tests/DnsProxyExt/StageTest.h"
#include "tests/dnscodec/Samples.h"
#include "tests/support/ExpectedText.h"

namespace quillet::test {

class FlowManagerTest : public StageTest {
 protected:
  Texts report(const ReportSettings& settings) {
    log_.clear();
    registry_.printFlowReport(settings);
    return log_.records();
  }
};

TEST_F(FlowManagerTest, SaysSoWhenAFlowIsNotRegistered) {
  registry_.addErrorToFlow(FakeFlow(1), ErrorBreakpoint::upstream);
  registry_.flowWasHandled(FakeFlow(1), "nil");
  registry_.addRequest(FakeFlow(1), {Data(12)}, {});
  EXPECT_THAT(log_.records(), ElementsAre("***Critical: FlowManager -> addErrorToFlow is nil",
                                          "***Critical: FlowManager -> flowWasHandled is nil"));
}

TEST_F(FlowManagerTest, ReportsEveryFlow) {
  add(1);
  const auto done = add(2);
  const auto answer = answerForA();
  registry_.addRequest(*done, {answer, Data(3)},
                       {*DnsToolsSocket::Message::deserialize(answer), {}});
  clock_.advanceSeconds(0.25);
  registry_.addErrorToFlow(*done, ErrorBreakpoint::readingFlow);
  registry_.flowWasHandled(*done, "nil");
  EXPECT_EQ(linesOf(report({})), expectedText("DnsProxyExt/transcripts/flow-report.txt"));
}

TEST_F(FlowManagerTest, ReportsWhatTheSettingsAskFor) {
  add(1, {}, "com.apple.ΣSafari");
  clock_.advanceSeconds(60);
  add(2, {}, "org.mozilla.firefox");
  clock_.advanceSeconds(10);
  const std::pair<ReportSettings, std::string> rows[] = {
      {{.forLastSecs = 10}, "2"},
      {{.forLastSecs = 70}, "12"},
      {{.forLastSecs = 9}, ""},
      {{.package = "σsAFARi"}, "1"},
      {{.forLastSecs = 10, .package = "ςsafari"}, ""}};
  for (const auto& [settings, shown] : rows) {
    std::string keys;
    for (const auto& record : report(settings)) {
      keys.append(record.starts_with("flow hash is ") ? record.substr(13) : "");
    }
    EXPECT_EQ(keys, shown);
  }
  EXPECT_THAT(report({.detailed = true}),
              Contains("flow 1 detailed, isBound: false, localEndpoint: "
                       "Optional(127.0.0.1:40000), remoteHostname: Optional(\"127.0.0.1\"), "
                       "nettworkInterface: nil"));
}

TEST_F(FlowManagerTest, DropsTheFlowThatFinishedFirstAndTheOldestThatIsNeverAnswered) {
  const auto first = add(1);
  const auto second = add(2);
  registry_.flowWasHandled(*second, "nil");
  registry_.flowWasHandled(*first, "nil");
  std::int64_t key = 2;
  for (std::size_t i = 1; i < FlowManager::kMaxFinished; ++i) {
    registry_.flowWasHandled(*add(++key), "nil");
  }
  EXPECT_EQ(registry_.find(*second), nullptr);
  EXPECT_NE(registry_.find(*first), nullptr);
  const auto oldest = add(++key);
  for (std::size_t i = 0; i < FlowManager::kMaxUnfinished; ++i) {
    add(++key);
  }
  EXPECT_EQ(registry_.find(*oldest), nullptr);
  EXPECT_NE(registry_.find(*first), nullptr);
  EXPECT_EQ(registry_.flows().size(), FlowManager::kMaxFinished + FlowManager::kMaxUnfinished);
}

TEST_F(FlowManagerTest, BoundsWhatQueriesTake) {
  std::int64_t key = 0;
  const auto addUpTo = [&](std::int64_t last, const Data& datagram) {
    while (key < last) {
      const auto flow = add(++key);
      registry_.addRequest(*flow, {datagram}, {*DnsToolsSocket::Message::deserialize(datagram)});
      if (key % 2 == 0) {
        registry_.flowWasHandled(*flow, "nil");
      }
    }
  };
  auto padded = hex("12 34 01 00 00 00 00 00 00 00 00 01 00 00 29 10 00 00 00 00 00 ea 60");
  padded.resize(padded.size() + 60'000);
  addUpTo(200, padded);
  EXPECT_EQ(registry_.flows().size(), 200U) << "padding takes what it takes";
  addUpTo(250, pointingQuestions(10'000));
  std::size_t kept = 0;
  for (const auto& [hash, record] : registry_.flows()) {
    kept += record->cost();
  }
  EXPECT_LE(kept, FlowManager::kMaxCost);
  EXPECT_GT(kept, FlowManager::kMaxCost / 2);
}

}  // namespace quillet::test
