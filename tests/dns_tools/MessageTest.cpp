#include "dns_tools/HostRecord.h"
#include "dns_tools/Message.h"
#include "dns_tools/NameServerRecord.h"
#include "dns_tools/Record.h"
#include "dns_tools/RecordType.h"
#include "tests/support/Test.h"

namespace DnsToolsSocket::test {

using namespace quillet::test;

/// The error's name, or "" when there is a message.
std::string errorOf(const tl::expected<Message, DecodeError>& message) {
  return message ? "" : description(message.error());
}

// An A record, an NS record for the authority, and one of type 10.
const char* const kAnswer =
    "1234 8180 0001 0001 0001 0001 01 61 00 0001 0001 C00C 0001 0001 0000003C 0004 01020304"
    "C00C 0002 0001 0000003C 0002 C00C 00 000A 0001 00000000 0000";

const char* const kAnswerText =
    "DNS Response(id: 4660, returnCode: 0, authoritativeAnswer: false, truncation: false, "
    "recursionDesired: true, recursionAvailable: true, questions: [DnsToolsSocket.Question(name: "
    R"("a.", type: 1, unique: false, internetClass: 1)], answers: )"
    R"([DnsToolsSocket.HostRecord<DnsToolsSocket.IPv4>(name: "a.", unique: false, internetClass: 1, )"
    R"(ttl: 60, ip: 1.2.3.4)], authorities: [DnsToolsSocket.NameServerRecord(name: "a.", )"
    R"(unique: false, internetClass: 1, ttl: 60, type: 2, nameServer: "a.")], additional: )"
    R"([DnsToolsSocket.Record(name: ".", unique: false, internetClass: 1, ttl: 0, type: 10, )"
    "data: 0 bytes)])";

TEST(Message, WritesAndReadsAnAnswer) {
  Message answer;
  answer.id = 0x1234;
  answer.type = MessageType::response;
  answer.recursionDesired = answer.recursionAvailable = true;
  answer.questions = {{"a.", 1, true, 1}};  // the unique bit is read, never written
  answer.answers = {HostRecord<IPv4>("a.", false, 1, 60, IPv4(0x01020304))};
  answer.authorities = {NameServerRecord("a.", 2, 1, false, 60, "a.")};
  answer.additional = {Record(".", false, 1, 0, 10, {})};
  EXPECT_EQ(answer.serialize(), hex(kAnswer));
  EXPECT_EQ(Message::deserialize(hex(kAnswer))->debugDescription(), kAnswerText);
  const auto unique = Message::deserialize(hex("0001 0000 0001 0000 0000 0000 00 0001 8001"));
  EXPECT_TRUE(unique->questions[0].unique && unique->questions[0].internetClass == 1);
}

TEST(Message, FramesForTCP) {
  const auto framed = hex("003C" + std::string(kAnswer));
  EXPECT_EQ(Message::deserialize(hex(kAnswer))->serializeTCP(), framed);
  // The pointer counts from after the length; octets past the frame are another one's.
  EXPECT_EQ(Message::deserializeTCP(hex("003C" + std::string(kAnswer) + "FF"))->debugDescription(),
            kAnswerText);
  for (const std::size_t size : {0U, 1U, 61U}) {
    EXPECT_EQ(errorOf(Message::deserializeTCP(DataView(framed).first(size))), "invalidMessageSize");
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
      {"0080", "Request(id: 0", 0, {"false", "false", "false", "true"}}};
  for (const auto& [word, head, operation, flags] : rows) {
    const auto bytes = hex("0000" + std::string(word) + "0000 0000 0000 0000");
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
