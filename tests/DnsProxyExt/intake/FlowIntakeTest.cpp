#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DnsProxyExt/intake/FlowIntake.h"
#include "tests/support/FakeFlow.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Wire.h"

namespace quillet {
namespace {

using platform::Data;
using platform::Error;
using test::query;
using testing::ElementsAre;
using testing::EndsWith;

class FlowIntakeTest : public testing::Test {
 protected:
  static constexpr char kApp[] = "com.example.app";

  FlowIntakeTest() { log_.clear(); }

  std::shared_ptr<test::FakeFlow> add(std::vector<Data> datagrams, const char* app = kApp) {
    auto flow = std::make_shared<test::FakeFlow>(++lastKey_, std::move(datagrams), app);
    registry_.addFlowIfNew(flow);
    log_.clear();
    return flow;
  }
  std::optional<Batch> read(const std::shared_ptr<test::FakeFlow>& flow) {
    return intake_.read(flow, flow->toRead, flow->readEndpoints, flow->readError,
                        [] { platform::NSLog("settings"); });
  }
  [[nodiscard]] const ManagedFlow& recordOf(const test::FakeFlow& flow) const {
    return *registry_.find(flow);
  }

  test::LogCapture log_;
  FlowManager registry_;
  FlowIntake intake_{registry_, RelayLog(std::make_shared<XpcUdpHelper>())};
  std::int64_t lastKey_ = 0;
};

TEST_F(FlowIntakeTest, AFlowThatCouldNotBeOpenedHasAnError) {
  const auto flow = add({});
  intake_.opened(flow, Error("no"));
  EXPECT_THAT(log_.records(),
              ElementsAre("handleNewUDPFlow, opened flow, hash = 1 ",
                          "error = ---> no, flowIsBound: false, networkInterface: nil, "
                          "appId: com.example.app"));
  EXPECT_THAT(recordOf(*flow).errors, ElementsAre(EndsWith("breakboint: 3")));
}

TEST_F(FlowIntakeTest, StopsAtWhatCannotBeRead) {
  const auto failing = add({query("a")});
  failing->readError = Error("broken");
  const auto absent = add({});
  absent->toRead.reset();
  const std::pair<std::shared_ptr<test::FakeFlow>, std::string> rows[] = {
      {failing, "read datagram, error = broken"},
      {absent, "***data  is nil***"},
      {add({}), "close read, flowHash = 3"},
  };
  for (const auto& [flow, lastRecord] : rows) {
    EXPECT_FALSE(read(flow));
    EXPECT_EQ(log_.records().back(), lastRecord);
  }
  EXPECT_THAT(recordOf(*failing).errors, ElementsAre(EndsWith("breakboint: 5")));
}

TEST_F(FlowIntakeTest, CountsAndKeepsTheDatagramsOfItsOwnOldApplicationToo) {
  const auto flow = add({query("a"), Data{1, 2}}, "com.quillet.ldapapp.ldap-app.DNS-proxy");
  const auto batch = read(flow);
  ASSERT_TRUE(batch);
  EXPECT_EQ(batch->datagrams, flow->toRead);
  EXPECT_EQ(batch->endpoints, flow->readEndpoints);
  read(flow);
  EXPECT_EQ(recordOf(*flow).rawReqData, flow->toRead) << "replaced";
  const auto& messages = recordOf(*flow).reqMessages;
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
  EXPECT_TRUE(read(add({Data{1, 2, 3}, query("quillet_osx_filter")})));
  EXPECT_THAT(log_.records(), testing::Not(testing::Contains("settings")));
  EXPECT_TRUE(read(add({query("quillet_osx_filter_p_other_d")})));
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
