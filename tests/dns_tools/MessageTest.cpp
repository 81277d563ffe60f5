#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "dns_tools/HostRecord.h"
#include "dns_tools/Message.h"
#include "dns_tools/RecordType.h"
#include "tests/support/Wire.h"

namespace {

using namespace DnsToolsSocket;
using platform::Data;
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
  const Message answer{0x1234,
                       MessageType::response,
                       0,
                       false,
                       false,
                       true,
                       true,
                       0,
                       {{"a.", 1, true, 1}},
                       {HostRecord<IPv4>("a.", false, 1, 60, IPv4(0x01020304))},
                       {},
                       {}};
  EXPECT_EQ(answer.serialize(), hex(kAnswer)) << "the question's unique bit is not written";
  EXPECT_EQ(Message::deserialize(hex(kAnswer))->debugDescription(), kAnswerText);
}

TEST(Message, FramesForTCP) {
  const auto framed = hex("0023" + std::string(kAnswer));
  EXPECT_EQ(Message::deserialize(hex(kAnswer))->serializeTCP(), framed);
  // The pointer counts from behind the length; octets behind the frame are another one's.
  EXPECT_EQ(Message::deserializeTCP(hex("0023" + std::string(kAnswer) + "FF"))->debugDescription(),
            kAnswerText);
  for (std::size_t size = 0; size < framed.size(); ++size) {
    const auto cut = Message::deserializeTCP(DataView(framed).first(size));
    EXPECT_EQ(errorOf(cut), "invalidMessageSize") << size;
  }
  EXPECT_EQ(errorOf(Message::deserializeTCP(hex("000B 0001 0000 0000 0000 0000 0000"))),
            "invalidMessageSize");
}

TEST(Message, PrintsAQuery) {
  const Message query{7, MessageType::query, 0, true, true, false, false, 3, {}, {}, {}, {}};
  EXPECT_EQ(
      platform::description(query),
      "DNS Request(id: 7, authoritativeAnswer: true, truncation: true, recursionDesired: false, "
      "recursionAvailable: false, questions: [], answers: [], authorities: [], additional: [])");
}

TEST(Message, ReadsAllSectionsAsAnotherLibraryWritesThem) {
  const auto message = Message::deserialize(hex(kFullAnswer));
  ASSERT_TRUE(message);
  EXPECT_EQ(message->questions.at(0).type, RecordType::all);
  ASSERT_EQ(message->answers.size(), 3U);
  EXPECT_EQ(
      platform::description(message->answers[0]),
      R"(DnsToolsSocket.StartOfAuthorityRecord(name: "example.com.", unique: false, internetClass: 1, ttl: 3600, mname: "ns1.example.com.", rname: "hostmaster.example.com.", serial: 2024010101, refresh: 7200, retry: 3600, expire: 1209600, minimum: 300))");
  EXPECT_EQ(message->answers[1]->type(), RecordType::mailExchange);
  EXPECT_EQ(message->authorities.at(0)->name(), "example.com.");
  ASSERT_EQ(message->additional.size(), 2U);
  EXPECT_EQ(
      platform::description(message->additional[1]),
      R"(DnsToolsSocket.PointerRecord(name: "1.2.0.192.in-addr.arpa.", unique: false, internetClass: 1, ttl: 60, destination: "host.example.com."))");
}

TEST(Message, CarriesTheFlags) {
  constexpr auto query = MessageType::query;
  constexpr auto response = MessageType::response;
  // Type, OPCODE, AA, TC, RD, RA, RCODE.
  using Flags = std::tuple<MessageType, unsigned, bool, bool, bool, bool, unsigned>;
  const std::pair<const char*, Flags> rows[] = {
      {"8000", {response, 0, false, false, false, false, 0}},
      {"2800", {query, 5, false, false, false, false, 0}},
      {"7800", {query, 15, false, false, false, false, 0}},
      {"0400", {query, 0, true, false, false, false, 0}},
      {"0200", {query, 0, false, true, false, false, 0}},
      {"0100", {query, 0, false, false, true, false, 0}},
      {"0080", {query, 0, false, false, false, true, 0}},
      {"8189", {response, 0, false, false, true, true, 9}},
      {"000F", {query, 0, false, false, false, false, 15}},
  };
  for (const auto& [word, flags] : rows) {
    const auto bytes = hex(std::string("0001") + word + "0000 0000 0000 0000");
    const auto message = Message::deserialize(bytes);
    ASSERT_TRUE(message) << word;
    EXPECT_EQ(Flags(message->type, message->operationCode, message->authoritativeAnswer,
                    message->truncation, message->recursionDesired, message->recursionAvailable,
                    message->returnCode),
              flags)
        << word;
    EXPECT_EQ(message->serialize(), bytes) << word;
  }
}

TEST(Message, ReadsTheUniqueBitOfAQuestion) {
  const auto message =
      Message::deserialize(hex("0001 0000 0001 0000 0000 0000 01 61 00 0001 8001"));
  ASSERT_TRUE(message);
  EXPECT_TRUE(message->questions[0].unique);
  EXPECT_EQ(message->questions[0].internetClass, 1);
}

TEST(Message, TellsWhatIsWrong) {
  const struct {
    const char* what;
    const char* bytes;
    const char* error;
  } kCases[] = {
      {"11 octets", "0001 0000 0000 0000 0000 00", "invalidMessageSize"},
      {"12 octets", "0001 0000 0000 0000 0000 0000", ""},
      {"octets behind", "0001 0000 0000 0000 0000 0000 FF", ""},
      {"65535 questions, none there", "0001 0000 FFFF 0000 0000 0000", "invalidLabelSize"},
      {"65535 records, none there", "0001 0000 0000 FFFF FFFF FFFF", "invalidLabelSize"},
      {"one question of two", "0001 0000 0002 0000 0000 0000 00 0001 0001", "invalidLabelSize"},
      {"a question without a type", "0001 0000 0001 0000 0000 0000 00", "invalidQuestion"},
      {"one cut in its type", "0001 0000 0001 0000 0000 0000 00 00", "invalidQuestion"},
      {"one without a class", "0001 0000 0001 0000 0000 0000 00 0001", "invalidQuestion"},
      {"one cut in its class", "0001 0000 0001 0000 0000 0000 00 0001 00", "invalidQuestion"},
      {"a record cut", "0001 0000 0000 0000 0001 0000 00 0001 00", "invalidIntegerSize"},
  };
  for (const auto& [what, bytes, error] : kCases) {
    EXPECT_EQ(errorOf(Message::deserialize(hex(bytes))), error) << what;
  }
}

TEST(Message, FailsWhereverItIsCut) {
  const auto whole = hex(kFullAnswer);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_NE(errorOf(Message::deserialize(DataView(whole).first(size))), "") << size;
  }
}

TEST(Message, WritesAgainWhatItReadsOfFlippedBits) {
  const auto whole = hex(kFullAnswer);
  for (std::size_t bit = 0; bit < whole.size() * 8; ++bit) {
    auto bytes = whole;
    bytes[bit / 8] = static_cast<std::uint8_t>(bytes[bit / 8] ^ 1U << bit % 8);
    if (const auto message = Message::deserialize(bytes)) {
      const auto written = message->serialize();
      ASSERT_TRUE(written) << bit;
      EXPECT_EQ(errorOf(Message::deserialize(*written)), "") << bit;
    }
  }
}

TEST(Message, TypesHaveTheirUsualNames) {
  const std::pair<std::uint16_t, const char*> rows[] = {
      {1, "A"},      {2, "NS"},     {5, "CNAME"},     {6, "SOA"},  {12, "PTR"},
      {15, "MX"},    {16, "TXT"},   {28, "AAAA"},     {33, "SRV"}, {64, "SVCB"},
      {251, "IXFR"}, {252, "AXFR"}, {65, "HTTPSSVC"}, {255, "*"},  {41, "Unknown"},
  };
  for (const auto& [type, text] : rows) {
    EXPECT_EQ(typeDescription(type), text);
  }
}

}  // namespace
