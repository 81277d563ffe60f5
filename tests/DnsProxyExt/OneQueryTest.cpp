#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet::test {

/// The records of one query's whole road, in their order and words.
class OneQueryTest : public ProviderTest {};

/// Options 65001, 65004, 65006, 65007 and 65015, in the order of their codes.
constexpr char kInjected[] =
    "1234010000010000000000010161000001000101300000290000000000000040fde900056f72673432"
    "fdec00093132372e302e302e31fdee00104575726f70652f4c6a75626c6a616e61"
    "fdef000131fdf7000d31373030303030303030313233";

constexpr char kToRelay[] =
    R"(readDatagrams hash = 7 ,app id = com.example.app
values for inject = ["65001": "org42", "65004": "127.0.0.1", "65006": "Europe/Ljubljana", "65007": "1", "65015": "1700000000123"]
***decodeDNSResponse***,data size = 35, flowHash:7
)";

constexpr char kLog[] =
    R"log(bypassAll = false
handleNewUDPFlow, hash = 7,  flow = <FakeFlow>, isBound: false, localEndpoint: Optional(127.0.0.1:40000),ledb: Optional(127.0.0.1:40000), remote: 127.0.0.1:5300
flows count = 0
handleNewUDPFlow, opened flow, hash = 7 
handleNewUDPFlow, start read datagrams from new flow 
try readDatagrams, flowHash = 7
reading readDatagrams flowHash = 7
---decodeDNSRequest---,data size = 19, hashFlow:7
decode request:DNS Request(id: 4660, authoritativeAnswer: false, truncation: false, recursionDesired: true, recursionAvailable: false, questions: [DnsToolsSocket.Question(name: "a.", type: 1, unique: false, internetClass: 1)], answers: [], authorities: [], additional: [])
Question: rawType = 1, debugDesc = A,
question domain is: a.
readDatagrams hash = 7 ,app id = com.example.app
datagram count = 1
---decodeDNSRequest---,data size = 19, hashFlow:7
decode request:DNS Request(id: 4660, authoritativeAnswer: false, truncation: false, recursionDesired: true, recursionAvailable: false, questions: [DnsToolsSocket.Question(name: "a.", type: 1, unique: false, internetClass: 1)], answers: [], authorities: [], additional: [])
Question: rawType = 1, debugDesc = A,
msg: Optional(DNS Request(id: 4660, authoritativeAnswer: false, truncation: false, recursionDesired: true, recursionAvailable: false, questions: [DnsToolsSocket.Question(name: "a.", type: 1, unique: false, internetClass: 1)], answers: [], authorities: [], additional: []))
shouldAllowAll = false, useSecondDNS = false, app = com.example.app, allowedApps = []
connect to DNS using Quillet DNS (SERVER, q: Optional("a")
getValuesForInject, configuration = Optional(["organizationId": "org42"])
sendIp = nil
sendTimezone = 0
values for inject = ["65001": "org42", "65004": "127.0.0.1", "65006": "Europe/Ljubljana", "65007": "1", "65015": "1700000000123"]
inject value: 65001 : org42 
inject value: 65004 : 127.0.0.1 
inject value: 65006 : Europe/Ljubljana 
inject value: 65007 : 1 
inject value: 65015 : 1700000000123 
dig @127.0.0.2 -p 81 +edns=0 +bufsize=4096 +ednsopt=65001:6f72673432 +ednsopt=65004:3132372e302e302e31 +ednsopt=65006:4575726f70652f4c6a75626c6a616e61 +ednsopt=65007:31 +ednsopt=65015:31373030303030303030313233 
-> dnsType1 = A
--> a
hex data = 1234010000010000000000010161000001000101300000290000000000000040fde900056f72673432fdec00093132372e302e302e31fdee00104575726f70652f4c6a75626c6a616e61fdef000131fdf7000d31373030303030303030313233
---decodeDNSRequest---,data size = 96, hashFlow:7
decode request:DNS Request(id: 4660, authoritativeAnswer: false, truncation: false, recursionDesired: true, recursionAvailable: false, questions: [DnsToolsSocket.Question(name: "a.", type: 1, unique: false, internetClass: 1)], answers: [], authorities: [], additional: [DnsToolsSocket.Record(name: "0.", unique: false, internetClass: 0, ttl: 0, type: 41, data: 64 bytes)])
Question: rawType = 1, debugDesc = A,
dnshost address = 127.0.0.1
init new DNSSocketClient, flowHash = 7
Connecting to udp, flowHash = 7
DNSSocketClient stateUpdateHandler:, flowHash = 7, state = setup
State: Setup, flowHash = 7

DNSSocketClient stateUpdateHandler:, flowHash = 7, state = preparing
State: Preparing, flowHash = 7

DNSSocketClient stateUpdateHandler:, flowHash = 7, state = ready
State: Ready, flowHash = 7

sendUDP, content count = 1, flowHash = 7
Data was sent to UDP, flowHash = 7
receiveUdp callback called, flowHash = 7, isComplete = true
Udp received, flowHash = 7, arr.count = 1, content.count = 1
handleInBoundDatagram,hash = 7, isFinish = true, error = nil
flow reports: ["7"]
***decodeDNSResponse***,data size = 35, flowHash:7
decode response:DNS Response(id: 4660, returnCode: 0, authoritativeAnswer: false, truncation: false, recursionDesired: true, recursionAvailable: true, questions: [DnsToolsSocket.Question(name: "a.", type: 1, unique: false, internetClass: 1)], answers: [DnsToolsSocket.HostRecord<DnsToolsSocket.IPv4>(name: "a.", unique: false, internetClass: 1, ttl: 60, ip: 1.2.3.4)], authorities: [], additional: [])
DNS response,  answers count: 1, ttl = 60, name = a.
Response: rawType = 1, debugDesc = A
Question: rawType = 1, debugDesc = A,
ip.presentationString - Optional("1.2.3.4")
handleInBoundDatagram,hash = 7, url = Optional("a.")
handleInBoundDatagram -> starting write datagrams,hash = 7
modified msg = Optional("DNS Response(id: 4660, returnCode: 0, authoritativeAnswer: false, truncation: false, recursionDesired: true, recursionAvailable: true, questions: [DnsToolsSocket.Question(name: \"a.\", type: 1, unique: false, internetClass: 1)], answers: [DnsToolsSocket.HostRecord<DnsToolsSocket.IPv4>(name: \"a.\", unique: false, internetClass: 1, ttl: 60, ip: 1.2.3.4)], authorities: [], additional: [])")
[DNS REQ FLOW] - took: 0.0msec, domain:Optional("a."), dnsServer:Optional("127.0.0.1"), hash - 7, additional: Optional([])
handleInBoundDatagram, closing read/write,hash = 7
self.connection?.cancel(), arr.count = 1, content count = 1, flowHash = 7
handleInBoundDatagram -> write datagrams, hash  = 7, hasError = false
DNSSocketClient stateUpdateHandler:, flowHash = 7, state = cancelled
State: Cancelled, flowHash = 7

)log";

TEST_F(OneQueryTest, LogsItsWholeRoad) {
  const FakeServer server(answerA);
  start(R"({"organizationId": "org42"})"_json);
  provider_->filteringDNS = hostAt(server.text());
  // The policy was fetched a moment ago.
  provider_->fetchingPolicyIsStarted = true;
  provider_->lastPolicyFetchTime = 1'700'000'000;
  runReady();
  log_.clear();
  serve(std::make_shared<FakeFlow>(7, std::vector<Data>{query("a")}));
  ASSERT_TRUE(runUntilLogged("State: Cancelled, flowHash = 7\n"));
  auto logged = records();
  EXPECT_THAT(logged.at(0), testing::MatchesRegex("\\[DnsProxyExt\\] handleNewUDPFlow, instance id "
                                                  "- <DnsProxyExt: [0-9]+>"));
  logged.erase(logged.begin());
  auto text = linesOf(logged);
  text.replace(text.find(server.text()), server.text().size(), "SERVER");
  EXPECT_EQ(text, kLog);
  EXPECT_THAT(server.received(), ElementsAre(hex(kInjected)));
  auto atRelay = relayed(8);
  atRelay.erase(atRelay.begin(), atRelay.begin() + 5);
  EXPECT_EQ(linesOf(atRelay), kToRelay);
}

TEST_F(OneQueryTest, TheErrorOfARefusedOneIsLogged) {
  provider_->filteringDNS = nobody();
  const std::vector<Data> two{query("a"), query("b")};
  offer(std::make_shared<FakeFlow>(7, two));
  const std::string error = "POSIXErrorCode(rawValue: 111): Connection refused";
  EXPECT_TRUE(runUntilLogged("udp socket error: " + error + ", flowHash = 7"));
  EXPECT_EQ(
      count("handleInBoundDatagram,hash = 7, isFinish = false, error = Optional(" + error + ")"), 1)
      << "one for all";
  const auto& report = provider_->dnsFlowsReports.at("7");
  EXPECT_TRUE(runUntil([&] { return report.keeper == nullptr; })) << "the exchange is over";
}

}  // namespace quillet::test
