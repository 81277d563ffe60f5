#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using platform::Data;
using platform::description;
using test::FakeServer;
using test::query;
using testing::ElementsAre;

constexpr char kPolicy[] =
    R"({"status": true, "version": 3, "dnsServerSettings": [
         {"assignedDomains": ["wiki.corp", "lab", "č"], "dnsServerIP": "10.0.0.53", "note": null},
         {"dnsServerIP": "10.0.0.54:5353", "assignedDomains": ["lab"]},
         {"assignedDomains": [], "dnsServerIP": ""}]})";
constexpr char kPolicyMap[] =
    R"(["lab": 10.0.0.54:5353, "wiki.corp": 10.0.0.53:53, "č": 10.0.0.53:53])";

class PolicyFetchTest : public test::ProviderTest {
 protected:
  PolicyFetchTest() {
    start(R"({"organizationId": "a\"b\\č"})"_json);
    runReady();
    provider_->policyUDPServer = host(policy_);
    setPolicy(kPolicy);
    log_.clear();
  }

  [[nodiscard]] auto fetches() const { return count("fetchPolicy"); }
  void offerNew() { offer(makeFlow({query("a")})); }

  void setPolicy(std::string_view text) {
    policy_.setAnswer([answer = Data(text.begin(), text.end())](const Data& /*received*/) {
      return std::vector<Data>{answer};
    });
  }

  FakeServer policy_{test::stayQuiet};
};

TEST_F(PolicyFetchTest, AsksForTheOrganisationAsItIsAndLogsWhatCameOfIt) {
  provider_->startFetchingPolicy();
  ASSERT_TRUE(runUntilLogged("Policy is fetched, success - true"));
  EXPECT_EQ(platform::textOf(policy_.received().at(0)),
            R"({"function": "localDNSMap","companyId": "a"b\č"})");
  const auto& records = log_.records();
  EXPECT_EQ(records[0], "startFetchingPolicy");
  EXPECT_EQ(records[1], "fetchPolicy");
  const auto at = std::find(records.begin(), records.end(), "onPolicyDataReceived");
  ASSERT_LE(at + 6, records.end());
  EXPECT_THAT(std::vector(at + 1, at + 6),
              ElementsAre(std::string("onPolicyDataReceived, resp: ") + kPolicy,
                          "updateWhitelistedDomains", "updating WhitelistedDomains...",
                          std::string(" WhitelistedDomains updated: ") + kPolicyMap,
                          "Policy is fetched, success - true"));
  setPolicy("\xFF{");
  provider_->startFetchingPolicy();
  EXPECT_TRUE(runUntil([&] { return count("Policy is fetched, success - true") == 2; }))
      << "an answer is a success, whatever it says";
  EXPECT_EQ(count("onPolicyDataReceived, resp: \uFFFD{"), 1);
}

TEST_F(PolicyFetchTest, FetchesAtTheFirstFlowsAndThenBySchedule) {
  EXPECT_EQ(fetches(), 0) << "a start fetches nothing";
  provider_->bypassAll = true;
  offerNew();
  EXPECT_EQ(fetches(), 1) << "declined flows count";
  offerNew();
  EXPECT_EQ(fetches(), 2) << "the second flow always fetches again";
  clock_.advanceSeconds(599.9);
  offerNew();
  runReady();
  EXPECT_EQ(fetches(), 2);
  clock_.advanceSeconds(0.1);
  runReady();
  EXPECT_EQ(fetches(), 3) << "once more, 600 seconds after the first, without a flow";
  offerNew();
  EXPECT_EQ(fetches(), 3) << "not more than 600 seconds";
  clock_.advanceSeconds(1);
  offerNew();
  EXPECT_EQ(fetches(), 4);
  EXPECT_EQ(provider_->lastPolicyFetchTime, 1'700'000'601);
  clock_.advanceSeconds(100'000);
  runReady();
  EXPECT_EQ(fetches(), 4) << "without flows nothing more";
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

TEST_F(PolicyFetchTest, AFetchWithoutAskerOrServerFails) {
  const auto expectFailure = [this](const char* record) {
    log_.clear();
    std::optional<bool> result;
    provider_->fetchPolicy([&](bool success) { result = success; });
    ASSERT_TRUE(runUntil([&] { return result.has_value(); })) << record;
    EXPECT_FALSE(*result);
    EXPECT_EQ(count(record), 1) << record;
  };
  provider_->policyUDPServer =
      std::make_shared<Utils::DNSHost>("127.0.0.1:" + std::to_string(test::closedPort()));
  expectFailure("onPolicyDataReceived, error");
  provider_->policyUDPServer = nullptr;
  expectFailure("fetchPolicy: policyUDPServer - nil");
  for (const auto& conf : {ConfigurationMap(), ConfigurationMap{{"organizationId", ""}}}) {
    provider_->macOSconfig = conf;
    expectFailure("fetchPolicy: policyUDPServer - orgId = nil");
  }
}

TEST_F(PolicyFetchTest, TakesAPolicyOrLeavesTheOldOne) {
  const std::pair<std::string, std::string> rows[] = {
      {kPolicy, kPolicyMap},
      {R"({"status": false, "dnsServerSettings": []})", kPolicyMap},
      {R"({"status": true})", kPolicyMap},
      {R"({"status": true, "dnsServerSettings": []})", "[:]"},
  };
  for (const auto& [answer, map] : rows) {
    provider_->updateWhitelistedDomains(platform::bytesOf(answer));
    EXPECT_EQ(description(provider_->whitelistedDomainsMap), map) << answer;
  }
  EXPECT_EQ(count("JSON decoder, error: The data couldn’t be read because it is missing., "), 1);
}

}  // namespace
}  // namespace quillet
