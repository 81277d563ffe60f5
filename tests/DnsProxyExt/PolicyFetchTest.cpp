#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet::test {

class PolicyFetchTest : public ProviderTest {
 protected:
  PolicyFetchTest() {
    start(R"({"organizationId": "org"})"_json);
    runReady();
    provider_->policyUDPServer = hostAt(policy_.text());
    log_.clear();
  }

  [[nodiscard]] auto fetches() const { return count("fetchPolicy"); }

  const FakeServer policy_{stayQuiet};
};

TEST_F(PolicyFetchTest, FetchesAtTheFirstFlowsAndThenBySchedule) {
  provider_->bypassAll = true;  // declined flows count
  const std::tuple<const char*, double, bool, int> rows[] = {
      {"a start fetches nothing", 0, false, 0},
      {"the first flow", 0, true, 1},
      {"the second one always fetches again", 0, true, 2},
      {"too soon", 599.9, true, 2},
      {"once more, 600 seconds after the first, without a flow", 0.1, false, 3},
      {"not more than 600 seconds", 0, true, 3},
      {"more", 1, true, 4},
      {"without flows nothing more", 100'000, false, 4}};
  for (const auto& [what, seconds, isOffered, expected] : rows) {
    clock_.advanceSeconds(seconds);
    runReady();
    if (isOffered) {
      offer(makeFlow({query("a")}));
    }
    EXPECT_EQ(fetches(), expected) << what;
  }
  EXPECT_EQ(count("startFetchingPolicy"), 1);
  EXPECT_EQ(provider_->lastPolicyFetchTime, 1'700'000'601);
}

TEST_F(PolicyFetchTest, TheDelayedFetchDoesNotKeepTheProvider) {
  provider_->policyUDPServer = nullptr;
  provider_->startFetchingPolicy();
  provider_->stopProxy(platform::NEProviderStopReason::kNone, [] {});
  const std::weak_ptr<DnsProxyExt> weak = provider_;
  provider_ = std::make_shared<DnsProxyExt>();
  ASSERT_TRUE(runUntil([&] { return weak.expired(); }));
  log_.clear();
  clock_.advanceSeconds(600);
  runReady();
  EXPECT_EQ(fetches(), 0);
}

TEST_F(PolicyFetchTest, AFetchIsASuccessWhateverTheAnswerAndFailsWithoutOne) {
  const auto expect = [this](const char* record, bool expected) {
    log_.clear();
    std::optional<bool> result;
    provider_->fetchPolicy([&](bool success) { result = success; });
    ASSERT_TRUE(runUntil([&] { return result.has_value(); })) << record;
    EXPECT_EQ(*result, expected) << record;
    EXPECT_EQ(count(record), 1) << record;
  };
  const FakeServer policy([](const Data& /*received*/) { return std::vector<Data>{{0xFF, '{'}}; });
  provider_->policyUDPServer = hostAt(policy.text());
  expect("onPolicyDataReceived, resp: \uFFFD{", true);
  EXPECT_EQ(count("updateWhitelistedDomains"), 1);
  provider_->policyUDPServer = nobody();
  expect("onPolicyDataReceived, error", false);
  provider_->policyUDPServer = nullptr;
  expect("fetchPolicy: policyUDPServer - nil", false);
  for (const auto& conf : {ConfigurationMap(), ConfigurationMap{{"organizationId", ""}}}) {
    provider_->macOSconfig = conf;
    expect("fetchPolicy: policyUDPServer - orgId = nil", false);
  }
}

}  // namespace quillet::test
