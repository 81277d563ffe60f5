#include <gtest/gtest.h>

#include <string>

#include "dns_tools/HostRecord.h"
#include "dns_tools/Message.h"
#include "dns_tools/OperationCode.h"
#include "dns_tools/Record.h"
#include "dns_tools/RecordType.h"
#include "dns_tools/ReturnCode.h"
#include "tests/support/Wire.h"

namespace {

using namespace DnsToolsSocket;
using platform::Data;
using platform::DataView;
using quillet::test::hex;

/// The error's name, or "" when the bytes are a message.
std::string errorOf(const Data& bytes) {
  const auto message = Message::deserialize(bytes);
  return message ? "" : platform::description(message.error());
}

Message exampleAnswer() {
  return {0x1234,
          MessageType::response,
          0,
          false,
          false,
          true,
          true,
          0,
          {{"a.", 1, false, 1}},
          {HostRecord<IPv4>("a.", false, 1, 60, IPv4(0x01020304))},
          {},
          {}};
}

const char* const kExampleAnswer =
    "1234 8180 0001 0001 0000 0000 01 61 00 0001 0001 C00C 0001 0001 0000003C 0004 01020304";

// SOA, MX and AAAA of example.com, its NS, SRV and PTR that belong to it; as dnspython writes it.
const char* const kFullAnswer =
    "beef85800001000300010002076578616d706c6503636f6d0000ff0001c00c00"
    "06000100000e100027036e7331c00c0a686f73746d6173746572c00c78a3f175"
    "00001c2000000e10001275000000012cc00c000f000100000e100009000a046d"
    "61696cc00cc00c001c00010000012c001020010db80000000000000000000000"
    "01c00c0002000100000e100002c029045f736970045f756470c00c0021000100"
    "00003c000c0001000213c403736970c00c0131013201300331393207696e2d61"
    "646472046172706100000c00010000003c000704686f7374c00c";

TEST(Message, SerializesAnAnswer) { EXPECT_EQ(exampleAnswer().serialize(), hex(kExampleAnswer)); }

TEST(Message, DeserializesAnAnswer) {
  const auto message = Message::deserialize(hex(kExampleAnswer));
  ASSERT_TRUE(message);
  EXPECT_EQ(message->id, 0x1234);
  EXPECT_EQ(message->type, MessageType::response);
  EXPECT_EQ(message->operationCode, OperationCode::query);
  EXPECT_FALSE(message->authoritativeAnswer);
  EXPECT_FALSE(message->truncation);
  EXPECT_TRUE(message->recursionDesired);
  EXPECT_TRUE(message->recursionAvailable);
  EXPECT_EQ(message->returnCode, ReturnCode::noError);
  ASSERT_EQ(message->questions.size(), 1U);
  EXPECT_EQ(message->questions[0].name, "a.");
  EXPECT_EQ(message->questions[0].type, RecordType::host);
  EXPECT_EQ(message->questions[0].internetClass, 1);
  ASSERT_EQ(message->answers.size(), 1U);
  EXPECT_EQ(message->answers[0]->name(), "a.");
  EXPECT_EQ(message->answers[0]->ttl(), 60U);
  const auto* host = dynamic_cast<const HostRecord<IPv4>*>(&*message->answers[0]);
  ASSERT_NE(host, nullptr);
  EXPECT_EQ(host->ip.presentation(), "1.2.3.4");
  EXPECT_TRUE(message->authorities.empty());
  EXPECT_TRUE(message->additional.empty());
}

TEST(Message, PrintsAQuery) {
  const Message query{7, MessageType::query, 0, true, true, false, false, 3, {}, {}, {}, {}};
  EXPECT_EQ(
      query.debugDescription(),
      "DNS Request(id: 7, authoritativeAnswer: true, truncation: true, recursionDesired: false, "
      "recursionAvailable: false, questions: [], answers: [], authorities: [], additional: [])");
  EXPECT_EQ(platform::description(std::optional(query)),
            "Optional(" + query.debugDescription() + ")");
}

TEST(Message, ReadsAllSectionsAsAnotherLibraryWritesThem) {
  const auto message = Message::deserialize(hex(kFullAnswer));
  ASSERT_TRUE(message);
  EXPECT_EQ(
      message->debugDescription(),
      "DNS Response(id: 48879, returnCode: 0, authoritativeAnswer: true, truncation: false, "
      "recursionDesired: true, recursionAvailable: true, questions: "
      R"([DnsToolsSocket.Question(name: "example.com.", type: 255, unique: false, internetClass: 1)], )"
      R"(answers: [DnsToolsSocket.StartOfAuthorityRecord(name: "example.com.", unique: false, )"
      R"(internetClass: 1, ttl: 3600, mname: "ns1.example.com.", rname: "hostmaster.example.com.", )"
      "serial: 2024010101, refresh: 7200, retry: 3600, expire: 1209600, minimum: 300), "
      R"(DnsToolsSocket.Record(name: "example.com.", unique: false, internetClass: 1, ttl: 3600, )"
      "type: 15, data: 9 bytes), "
      R"(DnsToolsSocket.HostRecord<DnsToolsSocket.IPv6>(name: "example.com.", unique: false, )"
      "internetClass: 1, ttl: 300, ip: 2001:db8::1)], authorities: "
      R"([DnsToolsSocket.NameServerRecord(name: "example.com.", unique: false, internetClass: 1, )"
      R"(ttl: 3600, type: 2, nameServer: "ns1.example.com.")], additional: )"
      R"([DnsToolsSocket.ServiceRecord(name: "_sip._udp.example.com.", unique: false, )"
      R"(internetClass: 1, ttl: 60, priority: 1, weight: 2, port: 5060, server: "sip.example.com."), )"
      R"(DnsToolsSocket.PointerRecord(name: "1.2.0.192.in-addr.arpa.", unique: false, )"
      R"(internetClass: 1, ttl: 60, destination: "host.example.com.")]))");
}

TEST(Message, CarriesTheFlags) {
  const struct {
    const char* what;
    std::uint16_t word;
    MessageType type;
    std::uint8_t operationCode;
    bool aa, tc, rd, ra;
    std::uint8_t returnCode;
  } kCases[] = {
      {"nothing", 0, MessageType::query, 0, false, false, false, false, 0},
      {"QR", 0x8000, MessageType::response, 0, false, false, false, false, 0},
      {"inverse query", 0x0800, MessageType::query, OperationCode::inverseQuery, false, false,
       false, false, 0},
      {"update", 0x2800, MessageType::query, OperationCode::update, false, false, false, false, 0},
      {"OPCODE 15", 0x7800, MessageType::query, 15, false, false, false, false, 0},
      {"AA", 0x0400, MessageType::query, 0, true, false, false, false, 0},
      {"TC", 0x0200, MessageType::query, 0, false, true, false, false, 0},
      {"RD", 0x0100, MessageType::query, 0, false, false, true, false, 0},
      {"RA", 0x0080, MessageType::query, 0, false, false, false, true, 0},
      {"a usual answer", 0x8180, MessageType::response, 0, false, false, true, true, 0},
      {"RCODE 9", 0x8189, MessageType::response, 0, false, false, true, true,
       ReturnCode::serverNotAuthoritativeForZone},
      {"RCODE 15", 0x000F, MessageType::query, 0, false, false, false, false, 15},
  };
  for (const auto& flags : kCases) {
    auto bytes = hex("0001 0000 0000 0000 0000 0000");
    bytes[2] = static_cast<std::uint8_t>(flags.word >> 8);
    bytes[3] = static_cast<std::uint8_t>(flags.word);
    const auto message = Message::deserialize(bytes);
    ASSERT_TRUE(message) << flags.what;
    EXPECT_EQ(message->type, flags.type) << flags.what;
    EXPECT_EQ(message->operationCode, flags.operationCode) << flags.what;
    EXPECT_EQ(message->authoritativeAnswer, flags.aa) << flags.what;
    EXPECT_EQ(message->truncation, flags.tc) << flags.what;
    EXPECT_EQ(message->recursionDesired, flags.rd) << flags.what;
    EXPECT_EQ(message->recursionAvailable, flags.ra) << flags.what;
    EXPECT_EQ(message->returnCode, flags.returnCode) << flags.what;
    EXPECT_EQ(message->serialize(), bytes) << flags.what;
  }
}

TEST(Message, ReadsTheUniqueBitOfAQuestionAndNeverWritesIt) {
  const auto message =
      Message::deserialize(hex("0001 0000 0001 0000 0000 0000 01 61 00 0001 8001"));
  ASSERT_TRUE(message);
  EXPECT_TRUE(message->questions[0].unique);
  EXPECT_EQ(message->questions[0].internetClass, 1);
  EXPECT_EQ(message->serialize(), hex("0001 0000 0001 0000 0000 0000 01 61 00 0001 0001"));
}

TEST(Message, TellsWhatIsWrong) {
  const struct {
    const char* what;
    const char* bytes;
    const char* error;
  } kCases[] = {
      {"nothing", "", "invalidMessageSize"},
      {"11 octets", "0001 0000 0000 0000 0000 00", "invalidMessageSize"},
      {"12 octets", "0001 0000 0000 0000 0000 0000", ""},
      {"octets behind", "0001 0000 0000 0000 0000 0000 FF", ""},
      {"a question that is not there", "0001 0000 0001 0000 0000 0000", "invalidLabelSize"},
      {"65535 questions that are not there", "0001 0000 FFFF 0000 0000 0000", "invalidLabelSize"},
      {"65535 records that are not there", "0001 0000 0000 FFFF FFFF FFFF", "invalidLabelSize"},
      {"a question without type", "0001 0000 0001 0000 0000 0000 00", "invalidQuestion"},
      {"a question cut in its class", "0001 0000 0001 0000 0000 0000 00 0001 00",
       "invalidQuestion"},
      {"a question with a broken name", "0001 0000 0001 0000 0000 0000 02 61", "invalidLabelSize"},
      {"one question of two", "0001 0000 0002 0000 0000 0000 00 0001 0001", "invalidLabelSize"},
      {"an answer without type", "0001 0000 0000 0001 0000 0000 00", "invalidIntegerSize"},
      {"an authority cut in its class", "0001 0000 0000 0000 0001 0000 00 0001 00",
       "invalidIntegerSize"},
      {"an additional record cut in its TTL", "0001 0000 0000 0000 0000 0001 00 0001 0001 0000",
       "invalidIntegerSize"},
  };
  for (const auto& [what, bytes, error] : kCases) {
    EXPECT_EQ(errorOf(hex(bytes)), error) << what;
  }
}

TEST(Message, FailsWhereverItIsCut) {
  const auto whole = hex(kFullAnswer);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_NE(errorOf({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}), "")
        << size;
  }
}

TEST(Message, WritesAgainWhatItReadsOfFlippedBits) {
  const auto whole = hex(kFullAnswer);
  for (std::size_t bit = 0; bit < whole.size() * 8; ++bit) {
    auto bytes = whole;
    bytes[bit / 8] = static_cast<std::uint8_t>(bytes[bit / 8] ^ 1U << bit % 8);
    const auto message = Message::deserialize(bytes);
    if (message) {
      const auto written = message->serialize();
      ASSERT_TRUE(written) << bit;
      EXPECT_EQ(errorOf(*written), "") << bit;
    }
  }
}

TEST(Message, FramesForTCP) {
  const auto framed = exampleAnswer().serializeTCP();
  EXPECT_EQ(framed, hex("0023" + std::string(kExampleAnswer)));
  // The pointer counts from behind the length; octets behind the frame are another one's.
  auto bytes = *framed;
  bytes.push_back(0xFF);
  const auto message = Message::deserializeTCP(bytes);
  ASSERT_TRUE(message);
  EXPECT_EQ(message->debugDescription(), exampleAnswer().debugDescription());
  for (std::size_t size = 0; size < framed->size(); ++size) {
    const auto cut = Message::deserializeTCP(DataView(*framed).first(size));
    ASSERT_FALSE(cut) << size;
    EXPECT_EQ(cut.error(), DecodeError::invalidMessageSize) << size;
  }
  EXPECT_EQ(Message::deserializeTCP(hex("000B 0001 0000 0000 0000 0000 0000")).error(),
            DecodeError::invalidMessageSize);
}

}  // namespace
