#include "DnsProxyExt/answers/ResponsePath.h"
#include "platform/dispatch/MainLoop.h"
#include "tests/DnsProxyExt/StageTest.h"

namespace quillet::test {

class ResponsePathTest : public StageTest {
 protected:
  ResponsePathTest() { reports_.emplace("12", DNSFlowReport::startingNow("127.0.0.9")); }

  void answer(std::optional<Data> datagram, bool isFinished = true,
              std::optional<Error> error = std::nullopt) {
    log_.clear();
    path_.take({flow_, std::move(datagram), isFinished, asked_, std::move(error)}, nullptr);
    platform::MainLoop::shared().runReady();
  }

  DNSFlowReports reports_;
  ResponsePath path_{registry_, reports_, Decoding(relayLog_)};
  const platform::NWHostEndpoint asked_{"127.0.0.1", "5300"};
  const std::shared_ptr<FakeFlow> flow_ = add(12);
};

TEST_F(ResponsePathTest, TheFirstAnswerIsTimedAndTheLastOneCloses) {
  clock_.advanceSeconds(0.0125);
  answer(answerForA(), false);
  EXPECT_THAT(log_.records(), Contains(StartsWith("[DNS REQ FLOW] - took: 12.5msec, ")));
  EXPECT_THAT(log_.records(), Not(Contains("handleInBoundDatagram, closing read/write,hash = 12")));
  EXPECT_THAT(flow_->closed, IsEmpty());
  answer(answerForA());
  EXPECT_THAT(log_.records(), Not(Contains(StartsWith("[DNS REQ FLOW]"))));
  EXPECT_THAT(log_.records(), Contains("flow reports: []"));
  const auto written = std::pair(answerForA(), asked_);
  EXPECT_THAT(flow_->written, ElementsAre(written, written));
  EXPECT_THAT(flow_->closed, ElementsAre("read nil", "write nil"));
  EXPECT_THAT(recordOf(flow_).errors, ElementsAre("nil"));
  EXPECT_TRUE(recordOf(flow_).isFinished);
}

TEST_F(ResponsePathTest, AnErrorWithAnAnswerClosesWithThatError) {
  flow_->writeError = Error("unwritten");
  answer(answerForA(), true, Error("upstream"));
  EXPECT_THAT(recordOf(flow_).errors, ElementsAre(EndsWith("breakboint: 1"),
                                                  EndsWith("breakboint: 0"), "Optional(upstream)"));
  EXPECT_THAT(log_.records().back(), EndsWith("hash  = 12, hasError = true"));
  EXPECT_THAT(flow_->closed, ElementsAre("read Optional(upstream)", "write Optional(upstream)"));
}

TEST_F(ResponsePathTest, WithoutBytesNothingIsWritten) {
  answer(std::nullopt, true, Error("refused"));
  EXPECT_EQ(linesOf(log_.records()),
            R"(handleInBoundDatagram,hash = 12, isFinish = true, error = Optional(refused)
flow reports: ["12"]
handleInBoundDatagram, data == nil,hash = 12
handleInBoundDatagram, closing read/write,hash = 12
)");
  EXPECT_TRUE(flow_->written.empty() && flow_->closed.empty() && reports_.contains("12"));
}

TEST_F(ResponsePathTest, TellsOfAnswersWithoutAddress) {
  const std::string url = "handleInBoundDatagram,hash = 12, url = ";
  const std::pair<Data, Texts> rows[] = {
      {hex("12 34 81"),
       {"decodeDNSResponse error", "handleInBoundDatagram,hash = 12, decode response returned nil",
        "modified msg = nil",
        "[DNS REQ FLOW] - took: 0.0msec, domain:nil, dnsServer:Optional(\"127.0.0.9\"), hash - 12, "
        "additional: nil"}},
      {hex("12 34 81 83 00 01 00 00 00 00 00 00 01 61 00 00 01 00 01"),
       {url + "<answers arr is empty>"}},
      {hex("12 34 81 80 00 01 00 01 00 00 00 00 01 61 00 00 41 00 01"
           "c0 0c 00 41 00 01 00 00 00 3c 00 03 00 01 00"),
       {"=== ignore HTTPSSVC ===", url + "Optional(\"a.\")"}},
      {hex("12 34 81 80 00 00 00 01 00 00 00 00 01 62 00 00 10 00 01 00 00 00 3c 00 04 03 78 3d "
           "79"),
       {url + "Optional(\"b.\")"}}};
  for (const auto& [bytes, lines] : rows) {
    answer(bytes);
    EXPECT_THAT(log_.records(), IsSupersetOf(lines));
    EXPECT_EQ(flow_->written.back(), std::pair(bytes, asked_));
  }
}

}  // namespace quillet::test
