#include <gtest/gtest.h>

#include <string>

#include "dns_tools/AliasRecord.h"
#include "dns_tools/HostRecord.h"
#include "dns_tools/NameServerRecord.h"
#include "dns_tools/PointerRecord.h"
#include "dns_tools/Reader.h"
#include "dns_tools/Record.h"
#include "dns_tools/RecordValue.h"
#include "dns_tools/ServiceRecord.h"
#include "dns_tools/StartOfAuthorityRecord.h"
#include "dns_tools/TextRecord.h"
#include "tests/support/Wire.h"

namespace {

using namespace DnsToolsSocket;
using platform::Data;
using quillet::test::hex;

tl::expected<Data, EncodeError> written(const ResourceRecord& record) {
  Data bytes;
  Labels labels;
  return record.serialize(bytes, labels).map([&] { return std::move(bytes); });
}

TEST(RecordValue, ADictionaryOutlivesTheRecordsWrittenWithIt) {
  Data bytes;
  Labels labels;
  for (int i = 0; i < 3; ++i) {
    const PointerRecord record("name.that.is.long.enough.", false, 1, 0, ".");
    ASSERT_TRUE(record.serialize(bytes, labels));
  }
  EXPECT_EQ(bytes.size(), 26U + 11 + 2 * (2 + 12));
}

struct KindCase {
  std::string bytes;
  RecordValue record;
  std::string text;
};

const std::vector<KindCase>& kindCases() {
  static const std::vector<KindCase> kCases{
      {"01 61 00 0001 0001 0000003C 0004 01020304",
       HostRecord<IPv4>("a.", false, 1, 60, IPv4(0x01020304)),
       R"(DnsToolsSocket.HostRecord<DnsToolsSocket.IPv4>(name: "a.", unique: false, internetClass: 1, ttl: 60, ip: 1.2.3.4))"},
      {"01 61 00 001C 8001 00000000 0010 20010DB8000000000000000000000001",
       HostRecord<IPv6>("a.", true, 1, 0, *IPv6::fromPresentation("2001:db8::1")),
       R"(DnsToolsSocket.HostRecord<DnsToolsSocket.IPv6>(name: "a.", unique: true, internetClass: 1, ttl: 0, ip: 2001:db8::1))"},
      {"01 61 00 0002 0001 0000003C 0005 01 6E 01 61 00",
       NameServerRecord("a.", 2, 1, false, 60, "n.a."),
       R"(DnsToolsSocket.NameServerRecord(name: "a.", unique: false, internetClass: 1, ttl: 60, type: 2, nameServer: "n.a."))"},
      {"01 61 00 0005 0001 FFFFFFFF 0005 01 62 01 63 00",
       AliasRecord("a.", false, 1, 0xFFFFFFFF, "b.c."),
       R"(DnsToolsSocket.AliasRecord(name: "a.", unique: false, internetClass: 1, ttl: 4294967295, canonicalName: "b.c."))"},
      {"01 61 00 000C 0001 0000003C 0002 C000", PointerRecord("a.", false, 1, 60, "a."),
       R"(DnsToolsSocket.PointerRecord(name: "a.", unique: false, internetClass: 1, ttl: 60, destination: "a."))"},
      {"01 61 00 0006 0001 0000003C 0019 01 6D 00 C000 FFFFFFFF FFFFFFFF 00000002 80000000 "
       "00000004",
       StartOfAuthorityRecord("a.", false, 1, 60, "m.", "a.", 0xFFFFFFFF, -1, 2, -2147483647 - 1,
                              4),
       R"(DnsToolsSocket.StartOfAuthorityRecord(name: "a.", unique: false, internetClass: 1, ttl: 60, mname: "m.", rname: "a.", serial: 4294967295, refresh: -1, retry: 2, expire: -2147483648, minimum: 4))"},
      {"01 61 00 0021 0001 0000003C 0008 0001 0002 13C4 C000",
       ServiceRecord("a.", false, 1, 60, 1, 2, 5060, "a."),
       R"(DnsToolsSocket.ServiceRecord(name: "a.", unique: false, internetClass: 1, ttl: 60, priority: 1, weight: 2, port: 5060, server: "a."))"},
      {"01 61 00 0010 0001 0000003C 000D 03 613D31 02 623D 05 783D793D7A",
       TextRecord("a.", false, 1, 60, {{"a", "1"}, {"b", ""}, {"x", "y=z"}}),
       R"(DnsToolsSocket.TextRecord(name: "a.", unique: false, internetClass: 1, ttl: 60, attributes: ["a": "1", "b": "", "x": "y=z"], values: []))"},
      {"01 61 00 0010 0001 0000003C 0000", TextRecord("a.", false, 1, 60, {}),
       R"(DnsToolsSocket.TextRecord(name: "a.", unique: false, internetClass: 1, ttl: 60, attributes: [:], values: []))"},
      {"01 61 00 000F 0001 0000003C 0005 000A 01 62 00",
       Record("a.", false, 1, 60, 15, {0, 10, 1, 'b', 0}),
       R"(DnsToolsSocket.Record(name: "a.", unique: false, internetClass: 1, ttl: 60, type: 15, data: 5 bytes))"},
      {"01 61 00 0041 0001 0000003C 0004 0001 01 62",
       Record("a.", false, 1, 60, 65, {0, 1, 1, 'b'}),
       R"(DnsToolsSocket.Record(name: "a.", unique: false, internetClass: 1, ttl: 60, type: 65, data: 4 bytes))"},
      {"01 61 00 8001 0001 0000003C 0001 FF", Record("a.", false, 1, 60, 32769, {0xFF}),
       R"(DnsToolsSocket.Record(name: "a.", unique: false, internetClass: 1, ttl: 60, type: 32769, data: 1 bytes))"},
      // OPT: class word 0x9000 is 36864 octets, the TTL word holds version 0 and the DO bit.
      {"00 0029 9000 00008000 0004 FDE9 0000",
       Record(".", true, 0x1000, 0x8000, 41, {0xFD, 0xE9, 0, 0}),
       R"(DnsToolsSocket.Record(name: ".", unique: true, internetClass: 4096, ttl: 32768, type: 41, data: 4 bytes))"},
  };
  return kCases;
}

TEST(RecordValue, WritesReadsAndPrintsEachKind) {
  for (const auto& [bytes, record, text] : kindCases()) {
    const auto octets = hex(bytes);
    EXPECT_EQ(written(*record), octets) << text;
    EXPECT_EQ(platform::description(record), text);
    Reader reader(octets);
    const auto read = RecordValue::read(reader);
    ASSERT_FALSE(reader.error()) << text;
    EXPECT_EQ(reader.remaining(), 0U) << text;
    EXPECT_EQ(platform::description(read), text);
    EXPECT_EQ(written(*read), octets) << text;
    for (std::size_t size = 0; size < octets.size(); ++size) {
      Reader cut(platform::DataView(octets).first(size));
      static_cast<void>(RecordValue::read(cut));
      EXPECT_TRUE(cut.error()) << text << " at " << size;
    }
  }
}

TEST(RecordValue, ANameServerRecordIsWrittenWithItsOwnType) {
  EXPECT_EQ(written(NameServerRecord("a.", 0x8027, 1, false, 60, "n.a.")),
            hex("01 61 00 8027 0001 0000003C 0005 01 6E 01 61 00"));
}

TEST(RecordValue, TellsWhatIsWrongWithData) {
  // Behind the owner name "a.", a class and a TTL.
  const struct {
    const char* what;
    const char* type;
    const char* data;
    const char* error;
  } kCases[] = {
      {"A of 5 octets", "0001", "0005 0102030405", "invalidIPAddress"},
      {"A longer than the message", "0001", "0005 01020304", "invalidDataSize"},
      {"A without a length", "0001", "00", "invalidIntegerSize"},
      {"AAAA of 4 octets", "001C", "0004 01020304", "invalidIPAddress"},
      {"NS shorter than its name", "0002", "0002 01 62 00", "invalidDataSize"},
      {"NS longer than its name", "0002", "0004 01 62 00 00", "invalidDataSize"},
      {"CNAME without a name", "0005", "0000", "invalidLabelSize"},
      {"PTR to itself", "000C", "0002 C00D", "invalidLabelOffset"},
      {"SOA longer than its fields", "0006",
       "0017 00 00 0000000100000002000000030000000400000005 00", "invalidDataSize"},
      {"SRV shorter than its name", "0021", "0007 0001 0002 0003 01 62 00", "invalidDataSize"},
      {"TXT without a string's length", "0010", "0001", "invalidIntegerSize"},
      {"TXT with a string cut short", "0010", "0003 02 61", "invalidLabelSize"},
      {"TXT that is not UTF-8", "0010", "0002 01 FF", "unicodeDecodingError"},
      {"an unknown type longer than the message", "FFFF", "FFFF 00", "invalidDataSize"},
  };
  for (const auto& [what, type, data, error] : kCases) {
    const auto octets = hex("01 61 00 " + std::string(type) + "0001 0000003C" + data);
    Reader reader(octets);
    static_cast<void>(RecordValue::read(reader));
    EXPECT_EQ(platform::description(reader.error()), "Optional(" + std::string(error) + ")")
        << what;
  }
}

TEST(RecordValue, SplitsTextsAtTheirFirstEqualsSign) {
  // a=1, b=, plain, x=y=z, a=2, =v, and a string without octets.
  const auto octets =
      hex("01 61 00 0010 0001 0000003C 001B 03613D31 02623D 05706C61696E 05783D793D7A 03613D32 "
          "023D76 00");
  Reader reader(octets);
  const auto record = RecordValue::read(reader);
  ASSERT_FALSE(reader.error());
  const auto& text = dynamic_cast<const TextRecord&>(*record);
  EXPECT_EQ(text.attributes,
            (TextRecord::Attributes{{"", "v"}, {"a", "2"}, {"b", ""}, {"x", "y=z"}}));
  EXPECT_EQ(text.values, (std::vector<std::string>{"plain", ""}));
  EXPECT_EQ(written(text),
            hex("01 61 00 0010 0001 0000003C 0010 023D76 03613D32 02623D 05783D793D7A"));
  for (const std::size_t size : {253U, 254U}) {
    const auto longest = written(TextRecord("a.", false, 1, 60, {{"k", std::string(size, 'v')}}));
    EXPECT_EQ(longest.has_value(), size == 253U);
    EXPECT_TRUE(longest || longest.error() == EncodeError::attributeTooLong);
  }
}

TEST(RecordValue, ComparesByNameAndTargetNotByTheRest) {
  const NameServerRecord server("a.", 2, 1, false, 60, "n.");
  const NameServerRecord sameServer("a.", 2, 3, true, 7, "n.");
  EXPECT_EQ(server, sameServer);
  EXPECT_EQ(std::hash<NameServerRecord>()(server), std::hash<NameServerRecord>()(sameServer));
  EXPECT_FALSE(server == NameServerRecord("b.", 2, 1, false, 60, "n."));
  EXPECT_FALSE(server == NameServerRecord("a.", 2, 1, false, 60, "m."));
  EXPECT_EQ(HostRecord<IPv4>("a.", false, 1, 60, IPv4(1)),
            HostRecord<IPv4>("a.", true, 3, 7, IPv4(2)));
  const PointerRecord pointer("a.", false, 1, 60, "d.");
  EXPECT_EQ(pointer, PointerRecord("a.", true, 3, 7, "d."));
  EXPECT_FALSE(pointer == PointerRecord("b.", false, 1, 60, "d."));
  EXPECT_FALSE(pointer == PointerRecord("a.", false, 1, 60, "e."));
}

}  // namespace
