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
#include "tests/support/Test.h"

namespace DnsToolsSocket::test {

using namespace quillet::test;

tl::expected<Data, EncodeError> written(const ResourceRecord& record) {
  Data bytes;
  Labels labels;
  return record.serialize(bytes, labels).map([&] { return std::move(bytes); });
}

/// A record of that type named "a.", its RDATA with their length.
Data recordOf(const std::string& type, const std::string& data) {
  return hex("01 61 00" + type + "0001 0000003C" + data);
}

/// The printed form of the record that the octets are, or what is wrong with them.
std::string readAndPrinted(DataView octets) {
  Reader reader(octets);
  const auto record = RecordValue::read(reader);
  if (reader.error()) {
    return description(*reader.error());
  }
  EXPECT_EQ(reader.remaining(), 0U);
  EXPECT_EQ(written(*record), Data(octets.begin(), octets.end()));
  return description(record);
}

TEST(RecordValue, ADictionaryOutlivesTheRecordsWrittenWithIt) {
  Data bytes;
  Labels labels;
  for (const std::string first : {"name", "name", "x"}) {
    const PointerRecord record(first + ".that.is.long.enough.", false, 1, 0, ".");
    ASSERT_TRUE(record.serialize(bytes, labels));
  }
  EXPECT_EQ(bytes.size(), 26U + 11 + 2 + 12 + 4 + 12);
}

TEST(RecordValue, WritesReadsAndPrintsEachKind) {
  const std::string head = R"((name: "a.", unique: false, internetClass: 1, ttl: 60, )";
  const std::tuple<const char*, const char*, RecordValue, std::string> rows[] = {
      {"0001", "0004 01020304", HostRecord<IPv4>("a.", false, 1, 60, IPv4(0x01020304)),
       "HostRecord<DnsToolsSocket.IPv4>" + head + "ip: 1.2.3.4)"},
      {"001C", "0010 20010DB8000000000000000000000001",
       HostRecord<IPv6>("a.", false, 1, 60, *IPv6::fromPresentation("2001:db8::1")),
       "HostRecord<DnsToolsSocket.IPv6>" + head + "ip: 2001:db8::1)"},
      {"0002", "0005 016E 0161 00", NameServerRecord("a.", 2, 1, false, 60, "n.a."),
       "NameServerRecord" + head + R"(type: 2, nameServer: "n.a."))"},
      {"0005", "0005 0162 0163 00", AliasRecord("a.", false, 1, 60, "b.c."),
       "AliasRecord" + head + R"(canonicalName: "b.c."))"},
      {"000C", "0002 C000", PointerRecord("a.", false, 1, 60, "a."),
       "PointerRecord" + head + R"(destination: "a."))"},
      {"0006", "0019 016D 00 C000 FFFFFFFF FFFFFFFF 00000002 80000000 00000004",
       StartOfAuthorityRecord("a.", false, 1, 60, "m.", "a.", ~0U, -1, 2, INT32_MIN, 4),
       "StartOfAuthorityRecord" + head + R"(mname: "m.", rname: "a.", serial: 4294967295, )" +
           "refresh: -1, retry: 2, expire: -2147483648, minimum: 4)"},
      {"0021", "0008 0001 0002 13C4 C000", ServiceRecord("a.", false, 1, 60, 1, 2, 5060, "a."),
       "ServiceRecord" + head + R"(priority: 1, weight: 2, port: 5060, server: "a."))"},
      {"0010", "0009 03 613D31 04 783D793D",
       TextRecord("a.", false, 1, 60, {{"a", "1"}, {"x", "y="}}),
       "TextRecord" + head + R"(attributes: ["a": "1", "x": "y="], values: []))"},
      {"0010", "0000", TextRecord("a.", false, 1, 60, {}),
       "TextRecord" + head + "attributes: [:], values: [])"},
      {"8001", "0002 C000", Record("a.", false, 1, 60, 32769, {0xC0, 0}),
       "Record" + head + "type: 32769, data: 2 bytes)"}};
  for (const auto& [type, data, record, printed] : rows) {
    const auto octets = recordOf(type, data);
    EXPECT_EQ(description(record), "DnsToolsSocket." + printed);
    EXPECT_EQ(readAndPrinted(octets), "DnsToolsSocket." + printed);
    EXPECT_EQ(written(*record), octets) << printed;
    for (std::size_t size = 0; size < octets.size(); ++size) {
      EXPECT_TRUE(readAndPrinted(DataView(octets).first(size)).starts_with("invalid"));
    }
  }
  // OPT, a payload of 36864 octets, version 0 and the DO bit: the class word taken apart.
  EXPECT_EQ(readAndPrinted(hex("00 0029 9000 00008000 0004 FDE9 0000")),
            "DnsToolsSocket.Record(name: \".\", unique: true, internetClass: 4096, ttl: 32768, "
            "type: 41, data: 4 bytes)");
}

TEST(RecordValue, TellsWhatIsWrongWithData) {
  const std::tuple<const char*, const char*, const char*, const char*> rows[] = {
      {"A of 5 octets", "0001", "0005 0102030405", "invalidIPAddress"},
      {"A longer than the message", "0001", "0005 01020304", "invalidDataSize"},
      {"NS shorter than its name", "0002", "0002 01 62 00", "invalidDataSize"},
      {"NS longer than its name", "0002", "0004 01 62 00 00", "invalidDataSize"},
      {"SOA longer than its fields", "0006",
       "0017 00 00 0000000100000002000000030000000400000005 00", "invalidDataSize"},
      {"SRV shorter than its name", "0021", "0007 0001 0002 0003 01 62 00", "invalidDataSize"},
      {"TXT that is not UTF-8", "0010", "0002 01 FF", "unicodeDecodingError"},
      {"an unknown type longer than the message", "FFFF", "FFFF 00", "invalidDataSize"}};
  for (const auto& [what, type, data, error] : rows) {
    EXPECT_EQ(readAndPrinted(recordOf(type, data)), error) << what;
  }
}

TEST(RecordValue, SplitsTextsAtTheirFirstEqualsSign) {
  // a=1, b=, plain, x=y=z, a=2, =v, and a string without octets.
  const auto octets =
      recordOf("0010", "001B 03613D31 02623D 05706C61696E 05783D793D7A 03613D32 023D76 00");
  Reader reader(octets);
  const auto text = RecordValue::read(reader);
  EXPECT_TRUE(description(text).ends_with(
      R"(attributes: ["": "v", "a": "2", "b": "", "x": "y=z"], values: ["plain", ""]))"));
  EXPECT_EQ(written(*text), recordOf("0010", "0010 023D76 03613D32 02623D 05783D793D7A"));
  for (const std::size_t size : {253U, 254U}) {
    const auto longest = written(TextRecord("a.", false, 1, 60, {{"k", std::string(size, 'v')}}));
    EXPECT_TRUE(longest ? size == 253
                        : size == 254 && longest.error() == EncodeError::attributeTooLong);
  }
}

TEST(RecordValue, ComparesByNameAndTargetNotByTheRest) {
  const NameServerRecord server("a.", 2, 1, false, 60, "n.");
  const NameServerRecord sameServer("a.", 0x8027, 3, true, 7, "n.");
  EXPECT_EQ(written(sameServer), hex("01 61 00 8027 8003 00000007 0003 01 6E 00"));
  EXPECT_EQ(std::hash<NameServerRecord>()(server), std::hash<NameServerRecord>()(sameServer));
  EXPECT_TRUE(server == sameServer && server != NameServerRecord("b.", 2, 1, false, 60, "n.") &&
              server != NameServerRecord("a.", 2, 1, false, 60, "m."));
  EXPECT_EQ(HostRecord<IPv4>("a.", false, 1, 60, IPv4(1)),
            HostRecord<IPv4>("a.", true, 3, 7, IPv4(2)));
  const PointerRecord pointer("a.", false, 1, 60, "d.");
  EXPECT_TRUE(pointer == PointerRecord("a.", true, 3, 7, "d.") &&
              pointer != PointerRecord("b.", false, 1, 60, "d.") &&
              pointer != PointerRecord("a.", false, 1, 60, "e."));
}

template <class Address>
void expectSame(const char* bytes, const char* text) {
  const auto ip = Address::networkBytes(hex(bytes)).value();
  EXPECT_EQ(ip.presentationString(), text);
  EXPECT_EQ(ip.presentation(), description(ip));
  const auto parsed = Address::fromPresentation(text).value();
  EXPECT_TRUE(parsed == ip && std::ranges::equal(parsed.bytes(), hex(bytes)));
}

TEST(IP, BytesAndTextStandForEachOther) {
  expectSame<IPv4>("ff020304", "255.2.3.4");
  expectSame<IPv6>("20010db8000000010000000000000001", "2001:db8:0:1::1");
  EXPECT_EQ(IPv4(0x01020304).debugDescription(), "1.2.3.4");
  EXPECT_FALSE(IPv4::fromPresentation(std::string_view("1.2.3.4\0", 8)));
  EXPECT_FALSE(IPv6::fromPresentation(std::string_view("::1\0", 4)));
  for (const std::size_t size : {0U, 3U, 5U, 15U, 17U}) {
    EXPECT_FALSE(IPv4::networkBytes(Data(size)) || IPv6::networkBytes(Data(size))) << size;
  }
}

TEST(IP, OfARecordChangesToATextThatIsOne) {
  const LogCapture log;
  HostRecord<IPv4> record("a.", false, 1, 60, IPv4(0x01020304));
  for (const auto* text : {"5.6.7.8", "::1"}) {
    record.changeIP(text);
    EXPECT_EQ(record.ip.presentation(), "5.6.7.8");
  }
  EXPECT_EQ(log.records(), std::vector<std::string>{"*** wrong ip ***"});
}

}  // namespace DnsToolsSocket::test
