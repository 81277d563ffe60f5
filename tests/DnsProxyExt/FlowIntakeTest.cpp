#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using platform::Data;
using platform::Error;
using test::query;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::SizeIs;

class FlowIntakeTest : public test::ProviderTest {
 protected:
  FlowIntakeTest() {
    provider_->filteringDNS = host(server_);
    log_.clear();
  }

  [[nodiscard]] const ManagedFlow& recordOf(const test::FakeFlow& flow) const {
    return *provider_->flowManager.find(flow);
  }

  test::FakeServer server_{test::answerA};
};

TEST_F(FlowIntakeTest, OpensANewFlowAndReadsItEvenWhenThatFailed) {
  const auto flow = makeFlow({query("a")});
  flow->openError = Error("no");
  serve(flow);
  EXPECT_THAT(flow->opened, ElementsAre(platform::NWHostEndpoint{"127.0.0.2", "81"}))
      << "at the filtering service";
  EXPECT_EQ(count("error = ---> no, flowIsBound: false, networkInterface: nil, "
                  "appId: com.example.app"),
            1);
  EXPECT_THAT(recordOf(*flow).errors, ElementsAre(testing::EndsWith("breakboint: 3"), "nil"));
  EXPECT_EQ(flow->reads, 1);
  flow->toRead = {Data{1, 2}};
  ASSERT_TRUE(offer(flow)) << "and reads it again when it is offered again";
  runReady();
  EXPECT_EQ(recordOf(*flow).rawReqData, flow->toRead);
  EXPECT_THAT(recordOf(*flow).reqMessages, SizeIs(2));
  EXPECT_EQ(flow->reads, 2);
  EXPECT_THAT(flow->opened, SizeIs(1));
  EXPECT_EQ(count("handleNewUDPFlow - old flow, hash = " + std::to_string(flow->hash())), 1);
}

TEST_F(FlowIntakeTest, StopsAtWhatCannotBeRead) {
  const auto failing = makeFlow({query("a")});
  failing->readError = Error("broken");
  const auto absent = makeFlow({});
  absent->toRead.reset();
  const auto empty = makeFlow({});
  const std::pair<std::shared_ptr<test::FakeFlow>, std::string> rows[] = {
      {failing, "read datagram, error = broken"},
      {absent, "***data  is nil***"},
      {empty, "close read, flowHash = " + std::to_string(empty->hash())},
  };
  for (const auto& [flow, lastRecord] : rows) {
    ASSERT_TRUE(offer(flow));
    runReady();
    EXPECT_EQ(records().back(), lastRecord);
    EXPECT_THAT(flow->closed, IsEmpty());
  }
  EXPECT_THAT(recordOf(*failing).errors, ElementsAre(testing::EndsWith("breakboint: 5")));
}

TEST_F(FlowIntakeTest, CountsAndKeepsTheDatagramsOfItsOwnOldApplicationToo) {
  const auto flow = makeFlow({query("a"), Data{1, 2}}, "com.quillet.ldapapp.ldap-app.DNS-proxy");
  serve(flow);
  EXPECT_THAT(server_.received(), testing::Contains(Data{1, 2})) << "forwarded as it is";
  EXPECT_EQ(recordOf(*flow).rawReqData, flow->toRead);
  ASSERT_THAT(recordOf(*flow).reqMessages, SizeIs(2));
  EXPECT_EQ(recordOf(*flow).reqMessages[0]->questions[0].name, "a.");
  EXPECT_EQ(recordOf(*flow).reqMessages[1], std::nullopt);
  EXPECT_THAT(
      log_.records(),
      IsSupersetOf({"force close the flow, error!!!, hash = " + std::to_string(flow->hash()),
                    std::string("readDatagrams ,data count = 2"),
                    std::string("readDatagrams ,data endpoints = 2"),
                    std::string("readDatagrams ,data endpoints = [127.0.0.1:5300, "
                                "127.0.0.1:5301]")}));
}

TEST_F(FlowIntakeTest, AReportCommandPrintsAndIsForwarded) {
  ASSERT_TRUE(offer(makeFlow({Data{1, 2, 3}, query("quillet_osx_filter")})))
      << "only the first query is looked at";
  serve(makeFlow({query("quillet_osx_filter_p_other_d")}));
  const auto& records = log_.records();
  const auto at = std::find_if(records.begin(), records.end(), [](const auto& record) {
    return record.starts_with("question domain is: ");
  });
  ASSERT_LT(at + 11, records.end());
  EXPECT_EQ(at[0], "question domain is: quillet_osx_filter_p_other_d.");
  EXPECT_EQ(at[1], "got params string: p_other_d.");
  EXPECT_THAT(
      std::vector(at + 4, at + 12),
      ElementsAre("vendorData: nil", "options: nil", "macosConfig options: [:]",
                  "whitelistedApps: []", "systemDnsSettings: nil",
                  "----> start of flow manager report <----",
                  "Report settings - package: Optional(\"other\"), tf: nil, detailed:  false",
                  "----< end of flow manager report >----"));
}

}  // namespace
}  // namespace quillet
