#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "dns_tools/HostRecord.h"
#include "dns_tools/Message.h"
#include "dns_tools/RecordType.h"
#include "tests/support/Wire.h"

namespace DnsToolsSocket::test {

using platform::DataView;
using quillet::test::hex;

/// The error's name, or "" when there is a message.
std::string errorOf(const tl::expected<Message, DecodeError>& message) {
  return message ? "" : platform::description(message.error());
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
  const auto text = platform::description(Message::deserialize(hex(kFullAnswer)).value());
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
  const std::string response = "DNS Response(id: 0, returnCode: 0, authoritativeAnswer: false, ";
  const std::string rest = "questions: [], answers: [], authorities: [], additional: [])";
  const std::string no = "truncation: false, recursionDesired: false, recursionAvailable: false, ";
  const std::string request = "DNS Request(id: 0, authoritativeAnswer: ";
  const std::tuple<const char*, int, std::string> rows[] = {
      {"8000", 0, response + no},
      {"800F", 0, "DNS Response(id: 0, returnCode: 15, authoritativeAnswer: false, " + no},
      {"7800", 15, request + "false, " + no},
      {"0400", 0, request + "true, " + no},
      {"0200", 0,
       request + "false, truncation: true, recursionDesired: false, recursionAvailable: false, "},
      {"0100", 0,
       request + "false, truncation: false, recursionDesired: true, recursionAvailable: false, "},
      {"0080", 0,
       request + "false, truncation: false, recursionDesired: false, recursionAvailable: true, "},
  };
  for (const auto& [word, operation, printed] : rows) {
    const auto bytes = hex(std::string("0000") + word + "0000 0000 0000 0000");
    const auto message = Message::deserialize(bytes).value();
    EXPECT_EQ(message.debugDescription(), printed + rest);
    EXPECT_EQ(message.operationCode, operation) << word;
    EXPECT_EQ(message.serialize(), bytes) << word;
  }
}

TEST(Message, TellsWhatIsWrong) {
  const std::pair<const char*, const char*> rows[] = {
      {"0000 0000 0000 0000 00", "invalidMessageSize"},
      {"0000 0000 0000 0000 0000", ""},
      {"0000 0000 0000 0000 0000 FF", ""},
      {"0000 FFFF 0000 0000 0000 00 0001 0001", "invalidLabelSize"},
      {"0000 0000 FFFF FFFF FFFF", "invalidLabelSize"},
      {"0000 0001 0000 0000 0000 00", "invalidQuestion"},
      {"0000 0001 0000 0000 0000 00 0001 00", "invalidQuestion"},
      {"0000 0000 0000 0001 0000 00 0001 00", "invalidIntegerSize"},
  };
  for (const auto& [bytes, error] : rows) {
    EXPECT_EQ(errorOf(Message::deserialize(hex(std::string("0001") + bytes))), error) << bytes;
  }
}

TEST(Message, TypesHaveTheirUsualNames) {
  std::string names;
  for (const int type : {1, 2, 5, 6, 12, 15, 16, 28, 33, 41, 64, 65, 251, 252, 255}) {
    names.append(typeDescription(static_cast<std::uint16_t>(type))).append(" ");
  }
  EXPECT_EQ(names, "A NS CNAME SOA PTR MX TXT AAAA SRV Unknown SVCB HTTPSSVC IXFR AXFR * ");
}

}  // namespace DnsToolsSocket::test
