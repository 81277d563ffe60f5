#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using platform::Data;
using platform::Error;
using test::answerForA;
using test::FakeFlow;
using test::hex;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class ResponsePathTest : public test::ProviderTest {
 protected:
  const platform::NWHostEndpoint asked_{"127.0.0.1", "5300"};

  ResponsePathTest() {
    provider_->flowManager.addFlowIfNew(flow_);
    log_.clear();
  }

  void answer(std::optional<Data> datagram, bool isFinished = true,
              std::optional<Error> error = std::nullopt) {
    provider_->handleInBoundDatagram(flow_, std::move(datagram), isFinished, asked_,
                                     std::move(error));
  }

  void startReport() {
    auto report = DNSFlowReport::startingNow("127.0.0.9");
    provider_->dnsFlowsReports.emplace(key(), std::move(report));
  }

  [[nodiscard]] std::string key() const { return std::to_string(flow_->hash()); }
  [[nodiscard]] const ManagedFlow& record() const { return *provider_->flowManager.find(*flow_); }

  std::shared_ptr<FakeFlow> flow_ = std::make_shared<FakeFlow>(12);
};

constexpr char kMessage[] =
    "DNS Response(id: 4660, returnCode: 0, authoritativeAnswer: false, truncation: false, "
    "recursionDesired: true, recursionAvailable: true, questions: [DnsToolsSocket.Question(name: "
    "\"a.\", "
    "type: 1, unique: false, internetClass: 1)], answers: "
    "[DnsToolsSocket.HostRecord<DnsToolsSocket.IPv4>(name: \"a.\", unique: false, internetClass: "
    "1, ttl: 60, "
    "ip: 1.2.3.4)], authorities: [], additional: []";

std::string quoted(std::string text) {
  for (std::size_t at = text.find('"'); at != std::string::npos; at = text.find('"', at + 2)) {
    text.insert(at, 1, '\\');
  }
  return '"' + text + '"';
}

TEST_F(ResponsePathTest, WritesTheAnswerAndClosesTheFlow) {
  startReport();
  clock_.advanceSeconds(0.0125);
  answer(answerForA());
  runReady();
  const std::string message = std::string(kMessage) + ")";
  EXPECT_THAT(
      records(),
      ElementsAre("handleInBoundDatagram,hash = 12, isFinish = true, error = nil",
                  "flow reports: [\"12\"]", "***decodeDNSResponse***,data size = 35, flowHash:12",
                  "decode response:" + message,
                  "DNS response,  answers count: 1, ttl = 60, name = a.",
                  "Response: rawType = 1, debugDesc = A", "Question: rawType = 1, debugDesc = A,",
                  "ip.presentationString - Optional(\"1.2.3.4\")",
                  "handleInBoundDatagram,hash = 12, url = Optional(\"a.\")",
                  "handleInBoundDatagram -> starting write datagrams,hash = 12",
                  "modified msg = Optional(" + quoted(message) + ")",
                  "[DNS REQ FLOW] - took: 12.5msec, domain:Optional(\"a.\"), "
                  "dnsServer:Optional(\"127.0.0.9\"), hash - 12, additional: Optional([])",
                  "handleInBoundDatagram, closing read/write,hash = 12",
                  "handleInBoundDatagram -> write datagrams, hash  = 12, hasError = false"));
  EXPECT_THAT(flow_->written, ElementsAre(std::pair(answerForA(), asked_)));
  EXPECT_THAT(flow_->closed, ElementsAre("read nil", "write nil"));
  EXPECT_THAT(record().errors, ElementsAre("nil"));
  EXPECT_TRUE(record().isFinished);
  EXPECT_THAT(provider_->dnsFlowsReports, IsEmpty());
}

TEST_F(ResponsePathTest, ASecondAnswerHasNoTimingAndCloses) {
  startReport();
  answer(answerForA(), false);
  runReady();
  EXPECT_THAT(flow_->closed, IsEmpty());
  EXPECT_THAT(log_.records(), Not(Contains("handleInBoundDatagram, closing read/write,hash = 12")));
  log_.clear();
  answer(answerForA(), true);
  runReady();
  EXPECT_THAT(log_.records(), Not(Contains(StartsWith("[DNS REQ FLOW]"))));
  EXPECT_THAT(log_.records(), Contains("flow reports: []"));
  EXPECT_THAT(flow_->closed, ElementsAre("read nil", "write nil"));
}

TEST_F(ResponsePathTest, AnErrorWithAnAnswerClosesWithThatError) {
  answer(answerForA(), true, Error("upstream"));
  runReady();
  EXPECT_THAT(record().errors,
              ElementsAre(testing::EndsWith("breakboint: 1"), "Optional(upstream)"));
  EXPECT_THAT(flow_->closed, ElementsAre("read Optional(upstream)", "write Optional(upstream)"));
}

TEST_F(ResponsePathTest, WithoutBytesNothingIsWritten) {
  startReport();
  answer(std::nullopt, true, Error("refused"));
  runReady();
  EXPECT_THAT(
      log_.records(),
      ElementsAre("handleInBoundDatagram,hash = 12, isFinish = true, error = Optional(refused)",
                  "flow reports: [\"12\"]", "handleInBoundDatagram, data == nil,hash = 12",
                  "handleInBoundDatagram, closing read/write,hash = 12"));
  EXPECT_THAT(flow_->written, IsEmpty());
  EXPECT_THAT(flow_->closed, IsEmpty());
  EXPECT_EQ(provider_->dnsFlowsReports.count(key()), 1U);
}

TEST_F(ResponsePathTest, WhatItCannotDecodePassesUnchanged) {
  startReport();
  const auto garbage = hex("12 34 81");
  answer(garbage);
  runReady();
  EXPECT_THAT(
      records(),
      ElementsAre(
          "handleInBoundDatagram,hash = 12, isFinish = true, error = nil", "flow reports: [\"12\"]",
          "***decodeDNSResponse***,data size = 3, flowHash:12", "decodeDNSResponse error",
          "handleInBoundDatagram,hash = 12, decode response returned nil",
          "handleInBoundDatagram -> starting write datagrams,hash = 12", "modified msg = nil",
          "[DNS REQ FLOW] - took: 0.0msec, domain:nil, "
          "dnsServer:Optional(\"127.0.0.9\"), hash - 12, additional: nil",
          "handleInBoundDatagram, closing read/write,hash = 12",
          "handleInBoundDatagram -> write datagrams, hash  = 12, hasError = false"));
  EXPECT_THAT(flow_->written, ElementsAre(std::pair(garbage, asked_)));
}

TEST_F(ResponsePathTest, TellsOfAnswersWithoutAddress) {
  const struct {
    const char* what;
    Data bytes;
    std::vector<std::string> lines;  // between decoding and writing
  } rows[] = {
      {"no answer records",
       hex("12 34 81 83 00 01 00 00 00 00 00 00 01 61 00 00 01 00 01"),
       {"handleInBoundDatagram,hash = 12, url = <answers arr is empty>"}},
      {"HTTPS",
       hex("12 34 81 80 00 01 00 01 00 00 00 00 01 61 00 00 41 00 01"
           "c0 0c 00 41 00 01 00 00 00 3c 00 03 00 01 00"),
       {"=== ignore HTTPSSVC ===", "handleInBoundDatagram,hash = 12, url = Optional(\"a.\")"}},
      {"no question",
       hex("12 34 81 80 00 00 00 01 00 00 00 00 01 62 00 00 10 00 01 00 00 00 3c 00 02 01 78"),
       {"handleInBoundDatagram,hash = 12, url = Optional(\"b.\")"}},
  };
  for (const auto& row : rows) {
    log_.clear();
    answer(row.bytes);
    const auto& all = log_.records();
    const auto end = std::find(all.begin(), all.end(),
                               "handleInBoundDatagram -> starting write datagrams,hash = 12");
    ASSERT_NE(end, all.end());
    EXPECT_EQ(std::vector<std::string>(end - static_cast<long>(row.lines.size()), end), row.lines)
        << row.what;
  }
}

TEST_F(ResponsePathTest, AFlowWithoutRecordIsServedAllTheSame) {
  const auto stranger = std::make_shared<FakeFlow>(99);
  provider_->handleInBoundDatagram(stranger, answerForA(), true, asked_, Error("x"));
  runReady();
  EXPECT_THAT(log_.records(), Contains("***Critical: FlowManager -> addErrorToFlow is nil"));
  EXPECT_THAT(log_.records(), Contains("***Critical: FlowManager -> flowWasHandled is nil"));
  EXPECT_THAT(stranger->closed, testing::SizeIs(2));
}

}  // namespace
}  // namespace quillet
