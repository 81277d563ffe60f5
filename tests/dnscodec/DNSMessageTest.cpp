#include "dnscodec/DNSMessage.h"
#include "tests/dnscodec/Samples.h"
#include "tests/support/Test.h"

namespace quillet::test {

std::optional<DNSMessage> decoded(DataView bytes) {
  DNSMessageDecoder decoder;
  decoder.decodeMessageInBuffer(bytes);
  return std::move(decoder.message);
}

TEST(DNSHeaderTest, ReadsAndWritesEachField) {
  const std::pair<const char*, DNSHeader> rows[] = {{"abcd 0000", {.id = 0xABCD}},
                                                    {"0000 8000", {.isQuery = false}},
                                                    {"0000 7800", {.opCode = 15}},
                                                    {"0000 0400", {.authoritativeAnswer = true}},
                                                    {"0000 0200", {.truncated = true}},
                                                    {"0000 0100", {.recursionDesired = true}},
                                                    {"0000 0080", {.recursionAvailable = true}},
                                                    {"0000 0020", {.authenticatedData = true}},
                                                    {"0000 0010", {.checkingDisabled = true}},
                                                    {"0000 000f", {.responseCode = 15}}};
  for (auto [bytes, header] : rows) {
    header.questionCount = 0x0102;
    header.answerRecordCount = 0x0304;
    header.authorityRecordCount = 0x0506;
    header.additionalRecordCount = 0x0708;
    const auto wire = hex(std::string(bytes) + "0102 0304 0506 0708");
    std::uint32_t offset = 0;
    DNSHeaderDecoder decoder;
    decoder.decodeHeaderInBuffer(wire, offset);
    EXPECT_EQ(decoder.header, header) << bytes;
    EXPECT_EQ(DNSHeaderEncoder::encode(header), wire) << bytes;
  }
  EXPECT_EQ(DNSHeaderEncoder::encode({.opCode = 0xFFF5, .responseCode = 0xF3}),
            hex("0000 2803 0000000000000000"));
}

TEST(DNSMessageTest, ItsElementsDecodeOnTheirOwnToo) {
  const auto bytes = hex("ff 01 61 00 001c 0003 00 0001 0002 00000003 0000 ff");
  std::uint32_t offset = 1;
  DNSQuestionDecoder question;
  question.decodeQuestionInBuffer(bytes, offset);
  EXPECT_EQ(DNSQuestionEncoder::encode(*question.question), hex("01 61 00 001c 0003"));
  DNSResourceRecordDecoder record;
  record.decodeResourceInBuffer(bytes, offset);
  EXPECT_EQ(record.resource->encode(), hex("00 0001 0002 00000003 0000"));
  EXPECT_EQ(offset, bytes.size() - 1);
}

TEST(DNSMessageTest, WritesNamesInFullAndRefusesEveryCut) {
  auto bytes = sampleAnswer();
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_FALSE(decoded(DataView(bytes).first(size))) << size;
  }
  bytes.push_back(0xFF);  // octets past the end are ignored
  EXPECT_EQ(DNSMessageEncoder::encode(decoded(bytes).value()),
            hex("abcd 81a0 0001 0002 0001 0001"
                "03777777 076578616d706c65 03636f6d 00 0001 0001"
                "03777777 076578616d706c65 03636f6d 00 0005 0001 0000012c 0006 03776562c010"
                "03776562 076578616d706c65 03636f6d 00 0001 0001 0000003c 0004 c0000201"
                "076578616d706c65 03636f6d 00 0002 0001 00015180 0006 036e7331c010"
                "036e7331 076578616d706c65 03636f6d 00 0001 0001 00015180 0004 c0000235"));
}

TEST(DNSMessageTest, RefusesCountsThatLie) {
  const std::string record = "00 0001 0001 00000000 0000";
  expectEach<std::string, bool>(
      [](const auto& rest) { return decoded(hex("1234 0100" + rest)).has_value(); },
      {{"0001 0000 0000 0000 00 0001 0001", true},
       {"0001 0000 0000 0000 02 6161 00 00", false},
       {"0001 0000 0000 0000 01 61 00 0001 00", false},
       {"0002 0000 0000 0000 00 0001 0001 00", false},
       {"ffff 0000 0000 0000 00 0001 0001", false},
       {"0000 ffff 0000 0000" + record, false},
       {"0000 0000 ffff 0000" + record, false},
       {"0000 0000 0000 0001 " + record, true},
       {"0000 0000 0000 ffff " + record, false},
       {"0000 0000 0000 0001 00 0001 0001 00000000 ffff", false}});
}

TEST(DNSMessageTest, BoundsTheTextOfAllNames) {
  // A name of 4 labels costs its 255 octets less the root's, one that points at it a pointer more.
  constexpr std::size_t kName = 254;
  constexpr std::size_t kMost =
      (DecodeBudget::kTotal - kName) / (DecodeBudget::kPointerCost + kName);
  for (const std::size_t pointers : {kMost, kMost + 1}) {
    auto bytes = pointingQuestions(pointers - 1);
    bytes[11] = 1;
    bytes.insert(bytes.end(), {0xC0, 12, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(decoded(bytes).has_value(), pointers == kMost);
  }
}

TEST(DNSMessageTest, LetsEachRecordWriteItself) {
  auto cname = std::make_shared<DNSCNAMEResourceRecord>();
  cname->name = "a";
  cname->canonicalName = "a.name.longer.than.its.empty.data";
  DNSMessage message;
  message.header.answerRecordCount = 5;  // what the header says of the lists does not count
  message.authorityRecords = {cname};
  EXPECT_EQ(DNSMessageEncoder::encode(message),
            hex("0000 0000 0000 0000 0001 0000 01 61 00 0000 0000 00000000 0023"
                "01 61 04 6e616d65 06 6c6f6e676572 04 7468616e 03 697473 05 656d707479"
                "04 64617461 00"));
  // Of a count too large the low bits are written.
  message.questions.assign(0x10001, std::make_shared<DNSQuestion>(DNSQuestion{".", 1, 1}));
  message.authorityRecords.clear();
  const auto bytes = DNSMessageEncoder::encode(message);
  EXPECT_EQ(bytes.size(), 12U + 5U * 0x10001);
  EXPECT_TRUE(bytes[4] == 0 && bytes[5] == 1);
}

TEST(DNSResourceRecordTest, LeavesOutDataThatHasNoLength) {
  DNSResourceRecord record;
  record.name = ".";
  record.data.resize(0xFFFF);
  EXPECT_EQ(record.encode().size(), 11U + 0xFFFF);
  EXPECT_EQ(record.encode()[9], 0xFF);
  EXPECT_EQ(record.copy()->encode(), record.encode());
  record.data.resize(0x10000);
  EXPECT_EQ(record.encode(), hex("00 0000 0000 00000000 0000"));
}

TEST(DNSResourceRecordTest, OfACnameReadsAndWritesItsTarget) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"01 61 00 ffff", "a", "01 61 00"},
      {"01 61 c005 ff 01 62 00", "a.b", "01 61 01 62 00"},  // a pointer into the data itself
      {"03 776562 c010", "web", "03 776562 00"},            // and one into the message
      {"03 77", "", "00 00"}};
  for (const auto& [data, name, written] : rows) {
    DNSResourceRecord record;
    record.name = "w";
    record.ttl = 1;
    record.data = hex(data);
    const auto cname = DNSCNAMEResourceRecord::fromResource(record);
    EXPECT_TRUE(cname->name == "w" && cname->ttl == 1);
    EXPECT_EQ(cname->canonicalName, name);
    EXPECT_EQ(cname->copy()->encodeData(), hex(written)) << data;
  }
}

TEST(DNSResourceRecordTest, OfAnOptHoldsItsFieldsInClassAndTtl) {
  DNSResourceRecord record;
  record.name = ".";
  record.type = 41;
  record.resourceClass = 4096;
  record.ttl = 0x1234FFFF;
  const auto opt = DNSOPTResourceRecord::fromResource(record);
  EXPECT_EQ(std::tuple(opt->udpPayloadSize, opt->extendedRCode, opt->version, opt->dnssecOK),
            std::tuple(4096, 0x12, 0x34, true));
  opt->data = hex("000a 0001 ff");
  EXPECT_EQ(opt->encode(), hex("00 0029 1000 12348000 0005 000a0001ff"));
  record.ttl = 0xFFFF7FFF;
  EXPECT_FALSE(DNSOPTResourceRecord::fromResource(record)->dnssecOK);
  // Only its own fields are written.
  DNSOPTResourceRecord fresh;
  fresh.name = ".";
  fresh.resourceClass = 0xFFFF;
  fresh.ttl = 0xFFFFFFFF;
  EXPECT_EQ(fresh.encode(), hex("00 0000 0000 00000000 0000"));
}

}  // namespace quillet::test
