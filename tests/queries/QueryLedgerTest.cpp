#include "queries/QueryLedger.h"
#include "tests/platform/Test.h"

namespace quillet::test {

using platform::LogMode;
using Flow = std::shared_ptr<platform::FlowActivity>;

class QueryLedgerTest : public testing::Test {
 protected:
  QueryLedgerTest() { platform::setLogMode(LogMode::brief); }
  ~QueryLedgerTest() override { platform::setLogMode(LogMode::full); }

  /// A flow that the fifth rule is for.
  Flow begin(std::vector<Data> queries, std::string application = "app") {
    auto flow = ledger_->began(platform::Transport::udp, queries);
    flow->offered({std::move(application)});
    const platform::ActivityScope scope(flow);
    QueryLedger::routed({Route::Rule::filtering, Utils::DNSHost::at("192.0.2.1", "81")});
    return flow;
  }

  LogCapture log_;
  platform::test::SharedClock clock_;
  const std::shared_ptr<QueryLedger> ledger_ = std::make_shared<QueryLedger>();
};

/// `query("a")` answered with an RCODE of four bits.
Data answer(std::uint8_t rcode, std::uint8_t id = 0x34, std::string_view name = "a") {
  auto bytes = query(name, 1, id);
  bytes[2] |= 0x80;
  bytes[3] = rcode;
  return bytes;
}

TEST_F(QueryLedgerTest, TellsNamesTypesAndCodesSoThatNobodyForgesAField) {
  const auto extended = "1234 8107 0001 0000 0000 0001  016100 0001 0001  00 0029 04d0"s;
  const std::tuple<Data, std::string, std::optional<Data>, std::string, std::string> rows[] = {
      {query("www.a", 28), "app", answer(0), "www.a AAAA app=app", "NOERROR"},
      {query("", 65), "app", answer(3), ". HTTPS app=app", "NXDOMAIN"},
      {query("a", 250), "", answer(11), "a TSIG app=-", "RCODE11"},
      {query("a b=c.\\\n\x7f\xc3\xa9", 123), "x rule=1\t", std::nullopt,
       R"(a\x20b\x3Dc.\x5C\x0A\x7F\xC3\xA9 TYPE123 app=x\x20rule\x3D1\x09)", "none"},
      {query("a"), "app", hex(extended + "01000000 0000"), "a A app=app", "BADCOOKIE"},
      {query("a"), "app", hex(extended), "a A app=app", "YXRRSET"},
      {query("a"), "app", hex("1234 8180"), "a A app=app", "none"},
      {hex("1234 0100 0000 0000 0000 0000"), "app", answer(1), "- - app=app", "FORMERR"},
      {hex("1234 0100 ffff 0000 0000 0000 3f"), "app", answer(1), "- - app=app", "FORMERR"},
      {hex(""), "app", std::nullopt, "- - app=app", "none"}};
  for (const auto& [asked, application, answered, what, rcode] : rows) {
    auto flow = begin({asked}, application);
    EXPECT_EQ(ledger_->open(), what.front() == '-' ? 0U : 1U);
    clock_.advanceSeconds(0.01234);
    if (answered) {
      flow->answering (*answered)();
    }
    flow.reset();
    auto line = std::string("query ").append(what).append(" rule=5 server=192.0.2.1:81 rcode=");
    EXPECT_THAT(log_.records(), ElementsAre(line.append(rcode).append(" ms=12.3")));
    log_.clear();
  }
}

TEST_F(QueryLedgerTest, TellsOfEachExactlyOnce) {
  Texts told;
  ledger_->observe([&](const QueryOutcome& outcome) {
    told.push_back(outcome.name.value_or("-") + (outcome.rcode ? " answered" : " given up"));
  });
  auto flow = begin(
      {query("a", 1, 1), query("b", 1, 1), query("c", 1, 2), query("c", 1, 2), query("d", 1, 3)});
  EXPECT_EQ(ledger_->open(), 5U);
  flow->answering(answer(0, 1, "b"))();
  EXPECT_THAT(told, ElementsAre("b answered")) << "by its question, of two with one id";
  flow->answering(answer(0, 9, "x"))();
  EXPECT_THAT(told, ElementsAre("b answered", "a answered")) << "the oldest, by no sign of its own";
  auto sent = flow->answering(answer(0, 2, "c"));
  flow->answering(answer(0, 2, "c"))();
  sent();
  sent();
  EXPECT_EQ(ledger_->open(), 1U);
  sent = flow->answering(answer(0, 3, "d"));
  flow->answering(answer(0, 3, "d"))();
  EXPECT_EQ(ledger_->open(), 1U) << "one answer more than queries";
  ledger_->giveUpAll();
  sent();
  flow.reset();
  EXPECT_THAT(told,
              ElementsAre("b answered", "a answered", "c answered", "c answered", "d given up"));
  EXPECT_EQ(log_.records().size(), 5U);
  EXPECT_EQ(ledger_->open(), 0U);
}

}  // namespace quillet::test
