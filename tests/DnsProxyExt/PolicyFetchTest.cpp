#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using platform::Data;
using platform::description;
using test::answerForA;
using test::FakeServer;
using test::query;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr char kPolicy[] =
    R"({"status": true, "dnsServerSettings": [
         {"assignedDomains": ["wiki.corp", "lab"], "dnsServerIP": "10.0.0.53"},
         {"assignedDomains": ["lab"], "dnsServerIP": "10.0.0.54:5353"}]})";
constexpr char kPolicyMap[] = R"(["lab": 10.0.0.54:5353, "wiki.corp": 10.0.0.53:53])";

std::vector<Data> answerA(const Data& /*received*/) { return {answerForA()}; }

class PolicyFetchTest : public test::ProviderTest {
 protected:
  PolicyFetchTest() {
    start(R"({"organizationId": "org42"})"_json);
    runReady();
    provider_->filteringDNS = host(filtering_);
    provider_->policyUDPServer = host(policy_);
    setPolicy(kPolicy);
    log_.clear();
  }

  [[nodiscard]] auto fetches() const {
    return std::count(log_.records().begin(), log_.records().end(), "fetchPolicy");
  }
  [[nodiscard]] std::vector<std::string> requests() const {
    std::vector<std::string> texts;
    for (const auto& datagram : policy_.received()) {
      texts.emplace_back(platform::textOf(datagram));
    }
    return texts;
  }
  void offerNew() { ASSERT_TRUE(offer(makeFlow({query("a")}))); }

  void setPolicy(std::string_view text) {
    policy_.setAnswer([answer = Data(text.begin(), text.end())](const Data& /*received*/) {
      return std::vector<Data>{answer};
    });
  }

  FakeServer policy_{test::stayQuiet};
  FakeServer filtering_{answerA};
};

TEST_F(PolicyFetchTest, AsksForTheOrganisationAsItIs) {
  const struct {
    const char* organization;
    const char* request;
  } rows[] = {
      {"org42", R"({"function": "localDNSMap","companyId": "org42"})"},
      {R"(a"b\)", R"({"function": "localDNSMap","companyId": "a"b\"})"},
      {"čč", R"({"function": "localDNSMap","companyId": "čč"})"},
  };
  for (const auto& row : rows) {
    provider_->macOSconfig = {{"organizationId", row.organization}};
    bool isDone = false;
    provider_->fetchPolicy([&](bool success) {
      EXPECT_TRUE(success);
      isDone = true;
    });
    ASSERT_TRUE(runUntil([&] { return isDone; }));
    EXPECT_EQ(requests().back(), row.request);
  }
}

TEST_F(PolicyFetchTest, FetchesAtTheFirstFlowsAndThenBySchedule) {
  EXPECT_EQ(fetches(), 0) << "a start fetches nothing";
  offerNew();
  EXPECT_EQ(fetches(), 1);
  offerNew();
  EXPECT_EQ(fetches(), 2) << "the second flow always fetches again";
  EXPECT_EQ(provider_->lastPolicyFetchTime, 1'700'000'000);
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
  ASSERT_TRUE(runUntil([&] { return policy_.received().size() == 4; }));
  EXPECT_EQ(log_.records()[2], "startFetchingPolicy");
}

TEST_F(PolicyFetchTest, DeclinedFlowsFetchToo) {
  provider_->bypassAll = true;
  EXPECT_FALSE(offer(makeFlow({query("a")})));
  EXPECT_TRUE(provider_->fetchingPolicyIsStarted);
  EXPECT_THAT(
      log_.records(),
      ElementsAre(StartsWith("[DnsProxyExt] handleNewUDPFlow, instance id - "), "bypassAll = true",
                  "startFetchingPolicy", "fetchPolicy", "init new PolicyUDPClient",
                  "PolicyUDPClient: Connecting to  udp, flowHash "));
}

TEST_F(PolicyFetchTest, TheDelayedFetchDoesNotKeepTheProvider) {
  provider_->policyUDPServer = nullptr;
  offerNew();
  provider_->stopProxy(platform::NEProviderStopReason::kNone, [] {});
  const std::weak_ptr<DnsProxyExt> weak = provider_;
  provider_ = std::make_shared<DnsProxyExt>();
  ASSERT_TRUE(runUntil([&] { return weak.expired(); }));
  log_.clear();
  clock_.advanceSeconds(600);
  runReady();
  EXPECT_EQ(fetches(), 0);
}

TEST_F(PolicyFetchTest, AFetchWithoutAskerOrServerSendsNothing) {
  std::vector<bool> done;
  const auto keep = [&](bool success) { done.push_back(success); };
  provider_->macOSconfig = {};
  provider_->fetchPolicy(keep);
  provider_->macOSconfig = {{"organizationId", ""}};
  provider_->fetchPolicy(keep);
  provider_->macOSconfig = {{"organizationId", "org42"}};
  provider_->policyUDPServer = nullptr;
  provider_->fetchPolicy(keep);
  EXPECT_THAT(done, ElementsAre(false, false, false));
  EXPECT_THAT(log_.records(),
              ElementsAre("fetchPolicy", "fetchPolicy: policyUDPServer - orgId = nil",
                          "fetchPolicy", "fetchPolicy: policyUDPServer - orgId = nil",
                          "fetchPolicy", "fetchPolicy: policyUDPServer - nil"));
  runReady();
  EXPECT_THAT(policy_.received(), IsEmpty());
}

TEST_F(PolicyFetchTest, LogsWhatCameOfIt) {
  provider_->startFetchingPolicy();
  ASSERT_TRUE(runUntilLogged("Policy is fetched, success - true"));
  const auto& records = log_.records();
  const auto at = std::find(records.begin(), records.end(), "onPolicyDataReceived");
  ASSERT_LE(at + 6, records.end());
  EXPECT_EQ(at[1], std::string("onPolicyDataReceived, resp: ") + kPolicy);
  EXPECT_EQ(at[2], "updateWhitelistedDomains");
  EXPECT_EQ(at[3], "updating WhitelistedDomains...");
  EXPECT_EQ(at[4], std::string(" WhitelistedDomains updated: ") + kPolicyMap);
  EXPECT_EQ(at[5], "Policy is fetched, success - true");
}

TEST_F(PolicyFetchTest, ARefusedPortFails) {
  provider_->policyUDPServer =
      std::make_shared<Utils::DNSHost>("127.0.0.1:" + std::to_string(test::closedPort()));
  provider_->startFetchingPolicy();
  ASSERT_TRUE(runUntilLogged("Policy is fetched, success - false"));
  EXPECT_THAT(log_.records(), Contains("onPolicyDataReceived, error"));
}

TEST_F(PolicyFetchTest, TakesAPolicyOrLeavesTheOldOne) {
  const std::string decodeError = "JSON decoder, error: ";
  const struct {
    const char* what;
    std::string answer;
    std::string map;
    std::string lastRecord;
  } rows[] = {
      {"a policy", kPolicy, kPolicyMap, std::string(" WhitelistedDomains updated: ") + kPolicyMap},
      {"a refusal", R"({"status": false, "dnsServerSettings": []})", kPolicyMap,
       std::string(" WhitelistedDomains updated: ") + kPolicyMap},
      {"no settings", R"({"status": true})", kPolicyMap,
       decodeError + "The data couldn’t be read because it is missing., "},
      {"no JSON", "{", kPolicyMap,
       decodeError + "The data couldn’t be read because it isn’t in the correct format., "},
      {"deep nesting", std::string(60'000, '['), kPolicyMap,
       decodeError + "The data couldn’t be read because it isn’t in the correct format., "},
      {"half a policy",
       R"({"status": true, "dnsServerSettings": [{"assignedDomains": ["x"], "dnsServerIP": "1"}, 5]})",
       kPolicyMap,
       decodeError + "The data couldn’t be read because it isn’t in the correct format., "},
      {"a port out of range",
       R"({"status": true, "dnsServerSettings": [{"assignedDomains": ["x"], "dnsServerIP": "1:70000"}]})",
       R"(["x": 1:70000])", R"( WhitelistedDomains updated: ["x": 1:70000])"},
      {"no servers", R"({"status": true, "dnsServerSettings": []})", "[:]",
       " WhitelistedDomains updated: [:]"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    provider_->updateWhitelistedDomains(platform::bytesOf(row.answer));
    EXPECT_EQ(description(provider_->whitelistedDomainsMap), row.map);
    EXPECT_EQ(log_.records().back(), row.lastRecord);
  }
}

TEST_F(PolicyFetchTest, DomainsOfOneServerShareIt) {
  provider_->updateWhitelistedDomains(platform::bytesOf(kPolicy));
  const auto& map = provider_->whitelistedDomainsMap;
  EXPECT_NE(map.server("wiki.corp"), map.server("lab"));
  provider_->updateWhitelistedDomains(platform::bytesOf(
      R"({"status": true, "dnsServerSettings": [{"assignedDomains": ["a", "b"], "dnsServerIP": "1"}]})"));
  EXPECT_EQ(map.server("a"), map.server("b"));
}

TEST_F(PolicyFetchTest, AnAnswerThatIsNoTextIsLoggedRepaired) {
  setPolicy("\xFF{");
  provider_->startFetchingPolicy();
  ASSERT_TRUE(runUntilLogged("Policy is fetched, success - true")) << "an answer came";
  EXPECT_THAT(log_.records(), Contains("onPolicyDataReceived, resp: \uFFFD{"));
  EXPECT_THAT(provider_->whitelistedDomainsMap, IsEmpty());
}

TEST_F(PolicyFetchTest, AFlowMeetsTheOldMapOrTheNewOne) {
  FakeServer mapped(answerA);
  std::string domains;
  for (int i = 0; i < 3'000; ++i) {
    domains += '"' + std::to_string(i) + ".corp\",";
  }
  setPolicy(R"({"status": true, "dnsServerSettings": [{"assignedDomains": [)" + domains +
            R"("last.corp"], "dnsServerIP": ")" + mapped.text() + R"("}]})");
  const auto first = makeFlow({query("last.corp")});
  ASSERT_TRUE(offer(first));  // begins the fetch, is routed before its answer
  runReady();
  serve(makeFlow({query("other.org")}));
  ASSERT_TRUE(runUntil([&] { return provider_->whitelistedDomainsMap.size() == 3'001; }));
  serve(makeFlow({query("last.corp")}));
  EXPECT_THAT(mapped.received(), ElementsAre(query("last.corp")));
  EXPECT_THAT(filtering_.received(), SizeIs(2));
}

TEST_F(PolicyFetchTest, TheSettingsMapLocalDomainsAtEveryStart) {
  log_.clear();
  start(R"({"mappedDomains": "[corp:10.1.1.1,lab:10.1.1.2:5300]"})"_json);
  EXPECT_EQ(description(provider_->localDomainsMap),
            R"(["corp": 10.1.1.1:53, "lab": 10.1.1.2:5300])");
  const auto opts = std::find_if(log_.records().begin(), log_.records().end(),
                                 [](const auto& record) { return record.starts_with("opts: "); });
  ASSERT_LT(opts + 1, log_.records().end());
  EXPECT_EQ(opts[1],
            R"(initLocalDomainsMap - got map: ["corp": 10.1.1.1:53, "lab": 10.1.1.2:5300])");
  start(R"({"secondDNS": "10.0.0.1"})"_json);
  EXPECT_THAT(provider_->localDomainsMap, IsEmpty());
}

}  // namespace
}  // namespace quillet
