#include "DnsProxyExt/intake/FlowIntake.h"
#include "tests/DnsProxyExt/StageTest.h"

namespace quillet {
namespace {

using test::query;
using testing::ElementsAre;
using testing::EndsWith;

class FlowIntakeTest : public test::StageTest {
 protected:
  std::optional<Batch> read(const std::shared_ptr<test::FakeFlow>& flow) {
    return intake_.read(flow, flow->toRead, flow->readEndpoints, flow->readError,
                        [] { platform::NSLog("settings"); });
  }

  FlowIntake intake_{registry_, relayLog_};
};

TEST_F(FlowIntakeTest, AFlowThatCouldNotBeOpenedHasAnError) {
  const auto flow = add(1);
  intake_.opened(flow, Error("no"));
  EXPECT_THAT(log_.records(),
              ElementsAre("handleNewUDPFlow, opened flow, hash = 1 ",
                          "error = ---> no, flowIsBound: false, networkInterface: nil, "
                          "appId: com.example.app"));
  EXPECT_THAT(recordOf(flow).errors, ElementsAre(EndsWith("breakboint: 3")));
}

TEST_F(FlowIntakeTest, StopsAtWhatCannotBeRead) {
  const auto failing = add(1, {query("a")});
  failing->readError = Error("broken");
  const auto absent = add(2);
  absent->toRead.reset();
  const std::pair<std::shared_ptr<test::FakeFlow>, std::string> rows[] = {
      {failing, "read datagram, error = broken"},
      {absent, "***data  is nil***"},
      {add(3), "close read, flowHash = 3"},
  };
  for (const auto& [flow, lastRecord] : rows) {
    EXPECT_FALSE(read(flow));
    EXPECT_EQ(log_.records().back(), lastRecord);
  }
  EXPECT_THAT(recordOf(failing).errors, ElementsAre(EndsWith("breakboint: 5")));
}

TEST_F(FlowIntakeTest, CountsAndKeepsTheDatagramsOfItsOwnOldApplicationToo) {
  const auto flow = add(1, {query("a"), Data{1, 2}}, "com.quillet.ldapapp.ldap-app.DNS-proxy");
  const auto batch = read(flow);
  ASSERT_TRUE(batch);
  EXPECT_EQ(batch->datagrams, flow->toRead);
  EXPECT_EQ(batch->endpoints, flow->readEndpoints);
  read(flow);
  EXPECT_EQ(recordOf(flow).rawReqData, flow->toRead) << "replaced";
  const auto& messages = recordOf(flow).reqMessages;
  ASSERT_EQ(messages.size(), 4U) << "appended";
  EXPECT_EQ(messages[2]->questions[0].name, "a.");
  EXPECT_EQ(messages[3], std::nullopt);
  EXPECT_THAT(log_.records(),
              testing::IsSupersetOf(
                  {"force close the flow, error!!!, hash = 1", "readDatagrams ,data count = 2",
                   "readDatagrams ,data endpoints = 2",
                   "readDatagrams ,data endpoints = [127.0.0.1:5300, 127.0.0.1:5301]",
                   "readDatagrams hash = 1 ,app id = com.quillet.ldapapp.ldap-app.DNS-proxy"}));
}

TEST_F(FlowIntakeTest, TheFirstQueryMayAskForAReport) {
  EXPECT_TRUE(read(add(1, {Data{1, 2, 3}, query("quillet_osx_filter")})));
  EXPECT_THAT(log_.records(), testing::Not(testing::Contains("settings")));
  EXPECT_TRUE(read(add(2, {query("quillet_osx_filter_p_other_d")})));
  const auto& records = log_.records();
  const auto at = std::find(records.begin(), records.end(),
                            "question domain is: quillet_osx_filter_p_other_d.");
  ASSERT_LE(at + 8, records.end());
  EXPECT_THAT(std::vector(at + 1, at + 8),
              ElementsAre("got params string: p_other_d.", "", "", "settings",
                          "----> start of flow manager report <----",
                          "Report settings - package: Optional(\"other\"), tf: nil, "
                          "detailed:  false",
                          "----< end of flow manager report >----"));
}

}  // namespace
}  // namespace quillet
