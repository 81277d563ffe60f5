#include "DnsProxyExt/intake/FlowIntake.h"
#include "DnsProxyExt/intake/ReportCommand.h"
#include "tests/DnsProxyExt/StageTest.h"

namespace quillet::test {

class FlowIntakeTest : public StageTest {
 protected:
  std::optional<Batch> read(const std::shared_ptr<FakeFlow>& flow) {
    return intake_.read(flow, flow->toRead, flow->readEndpoints, flow->readError,
                        [] { platform::NSLog("settings"); });
  }

  FlowIntake intake_{registry_, relayLog_};
};

TEST_F(FlowIntakeTest, AFlowThatCannotBeOpenedOrReadHasAnError) {
  const auto flow = add(1, {query("a")});
  intake_.opened(flow, Error("no"));
  EXPECT_EQ(log_.records().back(),
            "error = ---> no, flowIsBound: false, networkInterface: nil, appId: com.example.app");
  flow->readError = Error("broken");
  EXPECT_FALSE(read(flow));
  EXPECT_EQ(log_.records().back(), "read datagram, error = broken");
  EXPECT_THAT(recordOf(flow).errors,
              ElementsAre(EndsWith("breakboint: 3"), EndsWith("breakboint: 5")));
  const auto absent = add(2);
  absent->toRead.reset();
  EXPECT_FALSE(read(absent));
  EXPECT_EQ(log_.records().back(), "***data  is nil***");
  EXPECT_FALSE(read(add(3)));
  EXPECT_EQ(log_.records().back(), "close read, flowHash = 3");
}

TEST_F(FlowIntakeTest, CountsAndKeepsTheDatagramsOfItsOwnOldApplicationToo) {
  const auto flow = add(1, {query("a"), Data{1, 2}}, "com.quillet.ldapapp.ldap-app.DNS-proxy");
  const auto batch = read(flow).value();
  EXPECT_TRUE(batch.datagrams == flow->toRead && batch.endpoints == flow->readEndpoints);
  read(flow);
  EXPECT_EQ(recordOf(flow).rawReqData, flow->toRead) << "replaced";
  const auto& messages = recordOf(flow).reqMessages;
  ASSERT_EQ(messages.size(), 4U) << "appended";
  EXPECT_EQ(messages[2]->questions[0].name, "a.");
  EXPECT_EQ(messages[3], std::nullopt);
  EXPECT_THAT(log_.records(),
              IsSupersetOf({"force close the flow, error!!!, hash = 1",
                            "readDatagrams ,data count = 2", "readDatagrams ,data endpoints = 2",
                            "readDatagrams ,data endpoints = [127.0.0.1:5300, 127.0.0.1:5301]"}));
}

TEST_F(FlowIntakeTest, TheFirstQueryMayAskForAReport) {
  EXPECT_TRUE(read(add(1, {Data{1, 2, 3}, query("quillet_osx_filter")})));
  EXPECT_THAT(log_.records(), Not(Contains("settings")));
  EXPECT_TRUE(read(add(2, {query("quillet_osx_filter_p_other_d")})));
  EXPECT_THAT(linesOf(log_.records()), HasSubstr(
                                           R"(
question domain is: quillet_osx_filter_p_other_d.
got params string: p_other_d.


settings
----> start of flow manager report <----
Report settings - package: Optional("other"), tf: nil, detailed:  false
----< end of flow manager report >----
)"));
}

TEST(ReportCommand, ReadsTheParameters) {
  const auto settingsOf = [](const std::string& text) {
    const auto settings = reportParameters(text);
    return description(settings.forLastSecs) + " " + description(settings.package) +
           (settings.detailed ? " detailed" : "");
  };
  expectEach(settingsOf, {{"tf_300_d_x.example.", R"(Optional(300) nil detailed)"},
                          {"tf_300_d.example.", R"(Optional(300) nil)"},
                          {"tf_-5", R"(Optional(-5) nil)"},
                          {"tf_99999999999999999999", R"(nil nil)"},
                          {"p_a_p_b", R"(nil Optional("b"))"},
                          {"p_tf_9", R"(Optional(9) Optional("tf"))"},
                          {"p_d", R"(nil Optional("d") detailed)"},
                          {"p", R"(nil nil)"},
                          {"tf_d", R"(nil nil detailed)"},
                          {"tf_5_tf", R"(Optional(5) nil)"},
                          {"p_", R"(nil Optional(""))"}});
}

}  // namespace quillet::test
