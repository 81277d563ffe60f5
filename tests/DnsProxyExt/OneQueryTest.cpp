#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using test::query;

/// The records of one query's whole road, in their order and words.
class OneQueryTest : public test::ProviderTest {};

constexpr char kIdentity[] =
    R"(["65001": "org42", "65004": "127.0.0.1", "65006": "Europe/Ljubljana", )"
    R"("65007": "1", "65015": "1700000000123"])";

/// Options 65001, 65004, 65006, 65007 and 65015, in the order of their codes.
constexpr char kInjected[] =
    "1234010000010000000000010161000001000101300000290000000000000040fde900056f72673432"
    "fdec00093132372e302e302e31fdee00104575726f70652f4c6a75626c6a616e61"
    "fdef000131fdf7000d31373030303030303030313233";

std::string request(const std::string& additional) {
  return "DNS Request(id: 4660, authoritativeAnswer: false, truncation: false, recursionDesired: "
         "true, recursionAvailable: false, questions: [DnsToolsSocket.Question(name: \"a.\", type: "
         "1, unique: false, internetClass: 1)], answers: [], authorities: [], additional: [" +
         additional + "])";
}

constexpr char kResponse[] =
    "DNS Response(id: 4660, returnCode: 0, authoritativeAnswer: false, truncation: false, "
    "recursionDesired: true, recursionAvailable: true, questions: [DnsToolsSocket.Question(name: "
    "\"a.\", type: 1, unique: false, internetClass: 1)], answers: "
    "[DnsToolsSocket.HostRecord<DnsToolsSocket.IPv4>(name: \"a.\", unique: false, internetClass: "
    "1, ttl: 60, ip: 1.2.3.4)], authorities: [], additional: [])";

TEST_F(OneQueryTest, LogsItsWholeRoad) {
  const test::FakeServer server(test::answerA);
  start(R"({"organizationId": "org42"})"_json);
  provider_->filteringDNS = host(server);
  // The policy was fetched a moment ago.
  provider_->fetchingPolicyIsStarted = true;
  provider_->lastPolicyFetchTime = 1'700'000'000;
  runReady();
  log_.clear();
  const auto flow = makeFlow({query("a")});
  serve(flow);
  const auto key = std::to_string(flow->hash());
  ASSERT_TRUE(runUntilLogged("State: Cancelled, flowHash = " + key + "\n"));

  const auto state = "DNSSocketClient stateUpdateHandler:, flowHash = " + key + ", state = ";
  const std::string question = "Question: rawType = 1, debugDesc = A,";
  std::string escaped = kResponse;
  for (auto at = escaped.find('"'); at != std::string::npos; at = escaped.find('"', at + 2)) {
    escaped.insert(at, "\\");
  }
  const std::vector<std::string> expected{
      "bypassAll = false",
      "handleNewUDPFlow, hash = " + key +
          ",  flow = <FakeFlow>, isBound: false, localEndpoint: Optional(127.0.0.1:40000),ledb: "
          "Optional(127.0.0.1:40000), remote: 127.0.0.1:5300",
      "flows count = 0",
      "handleNewUDPFlow, opened flow, hash = " + key + " ",
      "handleNewUDPFlow, start read datagrams from new flow ",
      "try readDatagrams, flowHash = " + key,
      "reading readDatagrams flowHash = " + key,
      "---decodeDNSRequest---,data size = 19, hashFlow:" + key,
      "decode request:" + request(""),
      question,
      "question domain is: a.",
      "readDatagrams hash = " + key + " ,app id = com.example.app",
      "datagram count = 1",
      "---decodeDNSRequest---,data size = 19, hashFlow:" + key,
      "decode request:" + request(""),
      question,
      "msg: Optional(" + request("") + ")",
      "shouldAllowAll = false, useSecondDNS = false, app = com.example.app, allowedApps = []",
      "connect to DNS using Quillet DNS (" + server.text() + ", q: Optional(\"a\")",
      "getValuesForInject, configuration = Optional([\"organizationId\": \"org42\"])",
      "sendIp = nil",
      "sendTimezone = 0",
      std::string("values for inject = ") + kIdentity,
      "inject value: 65001 : org42 ",
      "inject value: 65004 : 127.0.0.1 ",
      "inject value: 65006 : Europe/Ljubljana ",
      "inject value: 65007 : 1 ",
      "inject value: 65015 : 1700000000123 ",
      "dig @127.0.0.2 -p 81 +edns=0 +bufsize=4096 +ednsopt=65001:6f72673432 "
      "+ednsopt=65004:3132372e302e302e31 +ednsopt=65006:4575726f70652f4c6a75626c6a616e61 "
      "+ednsopt=65007:31 +ednsopt=65015:31373030303030303030313233 ",
      "-> dnsType1 = A",
      "--> a",
      std::string("hex data = ") + kInjected,
      "---decodeDNSRequest---,data size = 96, hashFlow:" + key,
      "decode request:" +
          request("DnsToolsSocket.Record(name: \"0.\", unique: false, internetClass: 0, "
                  "ttl: 0, type: 41, data: 64 bytes)"),
      question,
      "dnshost address = 127.0.0.1",
      "init new DNSSocketClient, flowHash = " + key,
      "Connecting to udp, flowHash = " + key,
      "*Xpc Udp Data was sent to UDP*",
      "*Xpc Udp Data was sent to UDP*",
      state + "setup",
      "State: Setup, flowHash = " + key + "\n",
      state + "preparing",
      "State: Preparing, flowHash = " + key + "\n",
      state + "ready",
      "State: Ready, flowHash = " + key + "\n",
      "sendUDP, content count = 1, flowHash = " + key,
      "Data was sent to UDP, flowHash = " + key,
      "receiveUdp callback called, flowHash = " + key + ", isComplete = true",
      "Udp received, flowHash = " + key + ", arr.count = 1, content.count = 1",
      "handleInBoundDatagram,hash = " + key + ", isFinish = true, error = nil",
      "flow reports: [\"" + key + "\"]",
      "***decodeDNSResponse***,data size = 35, flowHash:" + key,
      std::string("decode response:") + kResponse,
      "DNS response,  answers count: 1, ttl = 60, name = a.",
      "Response: rawType = 1, debugDesc = A",
      question,
      "ip.presentationString - Optional(\"1.2.3.4\")",
      "handleInBoundDatagram,hash = " + key + ", url = Optional(\"a.\")",
      "handleInBoundDatagram -> starting write datagrams,hash = " + key,
      "modified msg = Optional(\"" + escaped + "\")",
      "[DNS REQ FLOW] - took: 0.0msec, domain:Optional(\"a.\"), dnsServer:Optional(\"127.0.0.1\"), "
      "hash - " +
          key + ", additional: Optional([])",
      "handleInBoundDatagram, closing read/write,hash = " + key,
      "self.connection?.cancel(), arr.count = 1, content count = 1, flowHash = " + key,
      "*Xpc Udp Data was sent to UDP*",
      "handleInBoundDatagram -> write datagrams, hash  = " + key + ", hasError = false",
      state + "cancelled",
      "State: Cancelled, flowHash = " + key + "\n",
  };
  const auto& logged = log_.records();
  EXPECT_THAT(logged.at(0), testing::MatchesRegex("\\[DnsProxyExt\\] handleNewUDPFlow, instance id "
                                                  "- <DnsProxyExt: [0-9]+>"));
  EXPECT_EQ(std::vector(logged.begin() + 1, logged.end()), expected);
  EXPECT_THAT(server.received(), testing::ElementsAre(test::hex(kInjected)));
  const auto atRelay = relayed(8);
  EXPECT_THAT(std::vector(atRelay.begin() + 5, atRelay.end()),
              testing::ElementsAre("readDatagrams hash = " + key + " ,app id = com.example.app",
                                   std::string("values for inject = ") + kIdentity,
                                   "***decodeDNSResponse***,data size = 35, flowHash:" + key));
}

}  // namespace
}  // namespace quillet
