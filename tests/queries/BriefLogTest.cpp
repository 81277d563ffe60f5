#include <map>
#include <regex>

#include "platform/flowhost/FlowHost.h"
#include "queries/QueryLedger.h"
#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet::test {

using platform::LogMode;
using platform::test::UDPSocket;

/// A provider that a flow host drives, with the ledger between them.
class BriefLogTest : public ProviderTest {
 protected:
  BriefLogTest() {
    platform::FlowHostOptions options;
    options.listen = {{"127.0.0.1", "0"}};
    options.sourceApp = "app";
    options.observer = ledger_;
    host_ = platform::FlowHost::bind(options).value();
    EXPECT_EQ(host_->serve(*provider_), std::nullopt);
    provider_->onRouted = QueryLedger::routed;
    provider_->fetchingPolicyIsStarted = true;
    provider_->lastPolicyFetchTime = 1'700'000'000;
    runReady();
    log_.clear();
  }
  ~BriefLogTest() override { platform::setLogMode(LogMode::full); }

  void ask(const UDPSocket& client, std::uint8_t id) {
    const auto port = static_cast<std::uint16_t>(std::stoi(host_->boundEndpoints().at(0).port));
    client.send(std::string(textOf(query("a", 1, id))),
                platform::SocketAddress::parse("127.0.0.1", port).value());
  }

  const std::shared_ptr<QueryLedger> ledger_ = std::make_shared<QueryLedger>();
  std::unique_ptr<platform::FlowHost> host_;
};

std::vector<Data> echoed(const Data& received) {
  auto answer = answerForA();
  answer[1] = received[1];
  return {answer};
}

TEST_F(BriefLogTest, AQueryIsToldInTheModeOfItsBeginningWhateverComesBetween) {
  constexpr std::size_t kQueries = 200;
  const FakeServer server([](const Data& received) {
    platform::setLogMode(received[1] % 3 == 0 ? LogMode::brief : LogMode::full);
    return echoed(received);
  });
  provider_->filteringDNS = hostAt(server.text());
  const std::vector<UDPSocket> clients(kQueries);  // a flow each
  std::size_t over = 0;
  ledger_->observe([&](const QueryOutcome&) { ++over; });
  for (std::size_t i = 0; i < kQueries; ++i) {
    ask(clients[i], static_cast<std::uint8_t>(i));
    ASSERT_TRUE(runUntil([&] { return over + 3 > i; })) << "three on their way at most";
  }
  ASSERT_TRUE(
      runUntil([&] { return over == kQueries && platform::NWConnection::openCount() == 0; }));
  runReady();
  std::map<std::string, int> recordsOfFlow;
  const std::regex hash("[hH]ash(?:Flow)?,? *[:=-] *([0-9]+)");
  std::ptrdiff_t brief = 0;
  for (const auto& record : log_.records()) {
    std::smatch match;
    if (std::regex_search(record, match, hash)) {
      ++recordsOfFlow[match[1]];
    }
    brief += record.starts_with("query a A app=") ? 1 : 0;
  }
  EXPECT_GT(brief, 20);
  EXPECT_GT(recordsOfFlow.size(), 20U);
  EXPECT_EQ(static_cast<std::size_t>(brief) + recordsOfFlow.size(), kQueries);
  for (const auto& [flow, records] : recordsOfFlow) {
    EXPECT_EQ(records, recordsOfFlow.begin()->second) << "flow " << flow << " is not told whole";
  }
}

TEST_F(BriefLogTest, NothingElseIsWrittenOfAQueryOrSentToTheRelay) {
  platform::setLogMode(LogMode::brief);
  const FakeServer server(echoed);
  provider_->filteringDNS = hostAt(server.text());
  const auto before = relayed(1).size();
  const UDPSocket client;
  for (std::uint8_t id = 0; id < 3; ++id) {
    ask(client, id);
    ASSERT_TRUE(runUntil([&] { return log_.records().size() == id + 1U; }));
    runReady();
  }
  EXPECT_THAT(log_.records(), testing::Each(StartsWith("query a A app=app rule=5")));
  EXPECT_EQ(relay_.received().size(), before);
}

}  // namespace quillet::test
