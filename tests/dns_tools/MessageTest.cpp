#include "dns_tools/HostRecord.h"
#include "dns_tools/Message.h"
#include "dns_tools/RecordType.h"
#include "tests/support/Test.h"

namespace DnsToolsSocket::test {

using namespace quillet::test;

/// The error's name, or "" when there is a message.
std::string errorOf(const tl::expected<Message, DecodeError>& message) {
  return message ? "" : description(message.error());
}

const char* const kAnswer =
    "1234 8180 0001 0001 0000 0000 01 61 00 0001 0001 C00C 0001 0001 0000003C 0004 01020304";

const char* const kAnswerText =
    "DNS Response(id: 4660, returnCode: 0, authoritativeAnswer: false, truncation: false, "
    "recursionDesired: true, recursionAvailable: true, questions: [DnsToolsSocket.Question(name: "
    R"("a.", type: 1, unique: false, internetClass: 1)], answers: )"
    R"([DnsToolsSocket.HostRecord<DnsToolsSocket.IPv4>(name: "a.", unique: false, internetClass: 1, )"
    "ttl: 60, ip: 1.2.3.4)], authorities: [], additional: [])";

// SOA, MX and AAAA of example.com, its NS, SRV and PTR that belong to it; as dnspython writes it.
const char* const kFullAnswer =
    "beef85800001000300010002076578616d706c6503636f6d0000ff0001c00c00"
    "06000100000e100027036e7331c00c0a686f73746d6173746572c00c78a3f175"
    "00001c2000000e10001275000000012cc00c000f000100000e100009000a046d"
    "61696cc00cc00c001c00010000012c001020010db80000000000000000000000"
    "01c00c0002000100000e100002c029045f736970045f756470c00c0021000100"
    "00003c000c0001000213c403736970c00c0131013201300331393207696e2d61"
    "646472046172706100000c00010000003c000704686f7374c00c";

TEST(Message, WritesAndReadsAnAnswer) {
  Message answer;
  answer.id = 0x1234;
  answer.type = MessageType::response;
  answer.recursionDesired = answer.recursionAvailable = true;
  answer.questions = {{"a.", 1, true, 1}};  // the unique bit is read, never written
  answer.answers = {HostRecord<IPv4>("a.", false, 1, 60, IPv4(0x01020304))};
  EXPECT_EQ(answer.serialize(), hex(kAnswer));
  EXPECT_EQ(Message::deserialize(hex(kAnswer))->debugDescription(), kAnswerText);
  const auto unique = Message::deserialize(hex("0001 0000 0001 0000 0000 0000 00 0001 8001"));
  EXPECT_TRUE(unique->questions[0].unique && unique->questions[0].internetClass == 1);
}

TEST(Message, FramesForTCP) {
  const auto framed = hex("0023" + std::string(kAnswer));
  EXPECT_EQ(Message::deserialize(hex(kAnswer))->serializeTCP(), framed);
  // The pointer counts from after the length; octets past the frame are another one's.
  EXPECT_EQ(Message::deserializeTCP(hex("0023" + std::string(kAnswer) + "FF"))->debugDescription(),
            kAnswerText);
  for (const std::size_t size : {0U, 1U, 36U}) {
    EXPECT_EQ(errorOf(Message::deserializeTCP(DataView(framed).first(size))), "invalidMessageSize");
  }
}

TEST(Message, ReadsAllSectionsAsAnotherLibraryWritesThem) {
  const auto text = description(Message::deserialize(hex(kFullAnswer)).value());
  const char* const fields[] = {
      "type: 255, ",
      R"(mname: "ns1.example.com.", rname: "hostmaster.example.com.", serial: 2024010101, )",
      R"(minimum: 300), DnsToolsSocket.Record(name: "example.com.", unique: false, )",
      "type: 15, data: 9 bytes), DnsToolsSocket.HostRecord<DnsToolsSocket.IPv6>(",
      R"(ip: 2001:db8::1)], authorities: [DnsToolsSocket.NameServerRecord()",
      R"(], additional: [DnsToolsSocket.ServiceRecord()",
      (R"("1.2.0.192.in-addr.arpa.", unique: false, internetClass: 1, ttl: 60, )"
       R"(destination: "host.example.com.")]))"),
  };
  std::size_t at = 0;
  for (const char* const field : fields) {
    at = text.find(field, at);
    ASSERT_NE(at, std::string::npos) << field << " in " << text;
  }
}

TEST(Message, CarriesTheFlags) {
  // Answer and code of the answer, operation code; authoritative, truncated, recursion.
  const std::tuple<const char*, const char*, int, std::array<const char*, 4>> rows[] = {
      {"8000", "Response(id: 0, returnCode: 0", 0, {"false", "false", "false", "false"}},
      {"800F", "Response(id: 0, returnCode: 15", 0, {"false", "false", "false", "false"}},
      {"7800", "Request(id: 0", 15, {"false", "false", "false", "false"}},
      {"0400", "Request(id: 0", 0, {"true", "false", "false", "false"}},
      {"0200", "Request(id: 0", 0, {"false", "true", "false", "false"}},
      {"0100", "Request(id: 0", 0, {"false", "false", "true", "false"}},
      {"0080", "Request(id: 0", 0, {"false", "false", "false", "true"}},
  };
  for (const auto& [word, head, operation, flags] : rows) {
    const auto bytes = hex({"0000", word, "0000 0000 0000 0000"});
    const auto message = Message::deserialize(bytes).value();
    EXPECT_EQ(message.debugDescription(),
              std::string("DNS ") + head + ", authoritativeAnswer: " + flags[0] +
                  ", truncation: " + flags[1] + ", recursionDesired: " + flags[2] +
                  ", recursionAvailable: " + flags[3] +
                  ", questions: [], answers: [], authorities: [], additional: [])");
    EXPECT_EQ(message.operationCode, operation) << word;
    EXPECT_EQ(message.serialize(), bytes) << word;
  }
}

TEST(Message, TellsWhatIsWrong) {
  const auto error = [](const std::string& rest) {
    return errorOf(Message::deserialize(hex("0001" + rest)));
  };
  expectEach(error, {
                        {"0000 0000 0000 0000 00", "invalidMessageSize"},
                        {"0000 0000 0000 0000 0000", ""},
                        {"0000 0000 0000 0000 0000 FF", ""},
                        {"0000 FFFF 0000 0000 0000 00 0001 0001", "invalidLabelSize"},
                        {"0000 0000 FFFF FFFF FFFF", "invalidLabelSize"},
                        {"0000 0001 0000 0000 0000 00", "invalidQuestion"},
                        {"0000 0001 0000 0000 0000 00 0001 00", "invalidQuestion"},
                        {"0000 0000 0000 0001 0000 00 0001 00", "invalidIntegerSize"},
                    });
}

TEST(Message, TypesHaveTheirUsualNames) {
  std::string names;
  for (const int type : {1, 2, 5, 6, 12, 15, 16, 28, 33, 41, 64, 65, 251, 252, 255}) {
    names.append(typeDescription(static_cast<std::uint16_t>(type))).append(" ");
  }
  EXPECT_EQ(names, "A NS CNAME SOA PTR MX TXT AAAA SRV Unknown SVCB HTTPSSVC IXFR AXFR * ");
}

}  // namespace DnsToolsSocket::test
