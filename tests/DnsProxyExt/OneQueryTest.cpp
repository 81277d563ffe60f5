#include "tests/DnsProxyExt/ProviderTest.h"

namespace quillet {
namespace {

using test::answerForA;
using test::FakeServer;
using test::query;

/// The records of one query's whole road, in their order and words.
class OneQueryTest : public test::ProviderTest {
 protected:
  /// The running number of the provider says nothing here.
  static std::string withoutInstance(const std::string& record) {
    const auto at = record.find("<DnsProxyExt: ");
    return at == std::string::npos ? record : record.substr(0, at) + "*";
  }
};

constexpr char kQuestions[] =
    "questions: [DnsToolsSocket.Question(name: \"a.\", type: 1, unique: false, internetClass: 1)]";

constexpr char kValues[] =
    R"(values for inject = ["65001": "org42", "65004": "127.0.0.1", "65006": "Europe/Ljubljana", )"
    R"("65007": "1", "65015": "1700000000123"])";

std::string request(const std::string& additional) {
  return "DNS Request(id: 4660, authoritativeAnswer: false, truncation: false, recursionDesired: "
         "true, "
         "recursionAvailable: false, " +
         std::string(kQuestions) + ", answers: [], authorities: [], additional: [" + additional +
         "])";
}

std::string response(const char* quote) {
  const std::string q = quote;
  std::string questions = kQuestions;
  for (auto at = questions.find('"'); at != std::string::npos;
       at = questions.find('"', at + q.size())) {
    questions.replace(at, 1, q);
  }
  return "DNS Response(id: 4660, returnCode: 0, authoritativeAnswer: false, truncation: false, "
         "recursionDesired: true, recursionAvailable: true, " +
         questions + ", answers: [DnsToolsSocket.HostRecord<DnsToolsSocket.IPv4>(name: " + q +
         "a." + q +
         ", unique: false, internetClass: 1, ttl: 60, ip: 1.2.3.4)], authorities: [], additional: "
         "[])";
}

TEST_F(OneQueryTest, LogsItsWholeRoad) {
  const FakeServer server(
      [](const platform::Data&) { return std::vector<platform::Data>{answerForA()}; });
  start(R"({"organizationId": "org42"})"_json);
  provider_->filteringDNS = host(server);
  // The policy was fetched a moment ago.
  provider_->fetchingPolicyIsStarted = true;
  provider_->lastPolicyFetchTime = 1'700'000'000;
  runReady();
  log_.clear();
  const auto flow = makeFlow({query("a")});
  serve(flow);
  ASSERT_TRUE(
      runUntilLogged("State: Cancelled, flowHash = " + std::to_string(flow->hash()) + "\n"));

  const auto key = std::to_string(flow->hash());
  const auto state = "DNSSocketClient stateUpdateHandler:, flowHash = " + key + ", state = ";
  const std::string question = "Question: rawType = 1, debugDesc = A,";
  const std::vector<std::string> expected{
      "[DnsProxyExt] handleNewUDPFlow, instance id - *",
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
      kValues,
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
      "hex data = 123401000001000000000001016100000100010130000029000000000000004"
      "0fde900056f72673432fdec00093132372e302e302e31fdee00104575726f70652f4c6a75626c6a616e61"
      "fdef000131fdf7000d31373030303030303030313233",
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
      "decode response:" + response("\""),
      "DNS response,  answers count: 1, ttl = 60, name = a.",
      "Response: rawType = 1, debugDesc = A",
      question,
      "ip.presentationString - Optional(\"1.2.3.4\")",
      "handleInBoundDatagram,hash = " + key + ", url = Optional(\"a.\")",
      "handleInBoundDatagram -> starting write datagrams,hash = " + key,
      "modified msg = Optional(\"" + response("\\\"") + "\")",
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
  std::vector<std::string> records;
  for (const auto& record : log_.records()) {
    records.push_back(withoutInstance(record));
  }
  EXPECT_EQ(records, expected);
  const auto atRelay = relayed(8);
  EXPECT_THAT(std::vector(atRelay.begin() + 5, atRelay.end()),
              testing::ElementsAre(
                  "readDatagrams hash = " + key + " ,app id = com.example.app",
                  "values for inject = [\"65001\": \"org42\", \"65004\": \"127.0.0.1\", \"65006\": "
                  "\"Europe/Ljubljana\", \"65007\": \"1\", \"65015\": \"1700000000123\"]",
                  "***decodeDNSResponse***,data size = 35, flowHash:" + key));
}

}  // namespace
}  // namespace quillet
