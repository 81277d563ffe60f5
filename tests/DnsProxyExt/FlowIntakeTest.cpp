#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using platform::Data;
using platform::Error;
using test::answerForA;
using test::FakeServer;
using test::query;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

std::vector<Data> answerA(const Data&) { return {answerForA()}; }

class FlowIntakeTest : public test::ProviderTest {
 protected:
  FlowIntakeTest() {
    provider_->filteringDNS = host(server_);
    log_.clear();
  }

  [[nodiscard]] std::vector<std::string> errorsOf(const test::FakeFlow& flow) const {
    return provider_->flowManager.find(flow)->errors;
  }

  FakeServer server_{answerA};
};

TEST_F(FlowIntakeTest, DeclinesWhileBypassed) {
  provider_->bypassAll = true;
  const auto flow = makeFlow({query("a")});
  EXPECT_FALSE(offer(flow));
  runReady();
  EXPECT_THAT(flow->opened, IsEmpty());
  EXPECT_THAT(provider_->flowManager.flows(), IsEmpty());
  EXPECT_EQ(log_.records().back(), "bypassAll = true");
  provider_->bypassAll = false;
  serve(makeFlow({query("a")}));
}

TEST_F(FlowIntakeTest, OpensANewFlowAtTheFilteringServiceAndReadsItOnce) {
  const auto flow = makeFlow({query("a")});
  serve(flow);
  EXPECT_THAT(flow->opened, ElementsAre(platform::NWHostEndpoint{"127.0.0.2", "81"}));
  EXPECT_EQ(flow->reads, 1);
}

TEST_F(FlowIntakeTest, ReadsAKnownFlowWithoutOpeningIt) {
  const auto flow = makeFlow({query("a")});
  serve(flow);
  log_.clear();
  ASSERT_TRUE(offer(flow));
  EXPECT_EQ(flow->reads, 2);
  EXPECT_THAT(flow->opened, SizeIs(1));
  const auto key = std::to_string(flow->hash());
  EXPECT_THAT(log_.records(), Contains("handleNewUDPFlow - old flow, hash = " + key));
  EXPECT_EQ(log_.records().back(), "try readDatagrams, flowHash = " + key);
}

TEST_F(FlowIntakeTest, ReadsEvenWhenOpeningFailed) {
  const auto flow = makeFlow({query("a")});
  flow->openError = Error("no");
  serve(flow);
  EXPECT_THAT(log_.records(),
              Contains("error = ---> no, flowIsBound: false, networkInterface: nil, "
                       "appId: com.example.app"));
  EXPECT_THAT(errorsOf(*flow), ElementsAre(testing::EndsWith("breakboint: 3"), "nil"));
}

TEST_F(FlowIntakeTest, StopsAtWhatCannotBeRead) {
  const auto failing = makeFlow({query("a")});
  failing->readError = Error("broken");
  const auto absent = makeFlow({});
  absent->toRead.reset();
  const auto empty = makeFlow({});
  const struct {
    std::shared_ptr<test::FakeFlow> flow;
    std::string lastRecord;
  } rows[] = {
      {failing, "read datagram, error = broken"},
      {absent, "***data  is nil***"},
      {empty, "close read, flowHash = " + std::to_string(empty->hash())},
  };
  for (const auto& row : rows) {
    ASSERT_TRUE(offer(row.flow));
    runReady();
    EXPECT_EQ(log_.records().back(), row.lastRecord);
    EXPECT_EQ(row.flow->reads, 1);
    EXPECT_THAT(row.flow->closed, IsEmpty());
  }
  EXPECT_THAT(errorsOf(*failing), ElementsAre(testing::EndsWith("breakboint: 5")));
  EXPECT_THAT(server_.received(), IsEmpty());
}

TEST_F(FlowIntakeTest, CountsDatagramsAndKeepsThem) {
  const auto flow = makeFlow({query("a"), Data{1, 2}});
  serve(flow);
  const auto* record = provider_->flowManager.find(*flow);
  EXPECT_EQ(record->rawReqData, flow->toRead);
  ASSERT_THAT(record->reqMessages, SizeIs(2));
  EXPECT_EQ(record->reqMessages[0]->questions[0].name, "a.");
  EXPECT_EQ(record->reqMessages[1], std::nullopt);
  const auto& records = log_.records();
  const auto at = std::find(records.begin(), records.end(), "readDatagrams ,data count = 2");
  ASSERT_LT(at + 2, records.end());
  EXPECT_EQ(at[1], "readDatagrams ,data endpoints = 2");
  EXPECT_EQ(at[2], "readDatagrams ,data endpoints = [127.0.0.1:5300, 127.0.0.1:5301]");
}

TEST_F(FlowIntakeTest, ServesItsOwnOldApplicationLikeAnyOther) {
  const auto flow = makeFlow({query("a")}, "com.quillet.ldapapp.ldap-app.DNS-proxy");
  serve(flow);
  EXPECT_THAT(log_.records(),
              Contains("force close the flow, error!!!, hash = " + std::to_string(flow->hash())));
}

TEST_F(FlowIntakeTest, AReportCommandPrintsAndIsForwarded) {
  const auto flow = makeFlow({query("quillet_osx_filter_p_other_d")});
  serve(flow);
  const auto& records = log_.records();
  const auto at = std::find(records.begin(), records.end(),
                            "question domain is: quillet_osx_filter_p_other_d.");
  ASSERT_LT(at + 11, records.end());
  EXPECT_EQ(at[1], "got params string: p_other_d.");
  EXPECT_EQ(at[4], "vendorData: nil");
  EXPECT_EQ(at[8], "systemDnsSettings: nil");
  EXPECT_EQ(at[9], "----> start of flow manager report <----");
  EXPECT_EQ(at[10], "Report settings - package: Optional(\"other\"), tf: nil, detailed:  false");
  EXPECT_EQ(at[11], "----< end of flow manager report >----");
  EXPECT_THAT(server_.received(), SizeIs(1));
}

TEST_F(FlowIntakeTest, AFirstQueryThatCannotBeDecodedIsNoCommand) {
  ASSERT_TRUE(offer(makeFlow({Data{1, 2, 3}, query("quillet_osx_filter")})));
  ASSERT_TRUE(runUntil([&] { return server_.received().size() == 2; }));
  EXPECT_THAT(log_.records(), Not(Contains(testing::StartsWith("question domain is: "))));
}

}  // namespace
}  // namespace quillet
