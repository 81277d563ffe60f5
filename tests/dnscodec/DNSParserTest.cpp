#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "dnscodec/DNSParser.h"
#include "tests/dnscodec/Samples.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Wire.h"

namespace quillet {

namespace {

using platform::Data;
using test::hex;
using test::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;
using Flags = DNSParser::Flags;

// id 0x1234, RD, a A IN
Data query() { return hex("1234 0100 0001 0000 0000 0000 01 61 00 0001 0001"); }

// The same with option 65007 and the text "1".
Data injectedQuery() {
  return hex(
      "1234 0100 0001 0000 0000 0001 01 61 00 0001 0001"
      "01 30 00 0029 0000 00000000 0005 fdef 0001 31");
}

class DNSParserTest : public testing::Test {
 protected:
  LogCapture log_;
};

TEST_F(DNSParserTest, LeavesOutAValueThatIsTooLong) {
  const std::string most(65535, 'x');
  const auto option = DNSParser::buildEdnsDataWithCode(65001, most);
  EXPECT_EQ(option.size(), 65539U);
  EXPECT_EQ(option[2], 0xFF);
  EXPECT_EQ(option[3], 0xFF);
  EXPECT_THAT(log_.records(), IsEmpty());

  EXPECT_THAT(DNSParser::buildEdnsDataWithCode(65001, most + "x"), IsEmpty());
  EXPECT_THAT(log_.records(), ElementsAre("inject value: 65001 left out, too long: 65536 bytes"));
  log_.clear();

  // One after which another has no room, beside one that has.
  const std::vector<std::string> values{"a", std::string(65527, 'x'), "b"};
  EXPECT_EQ(DNSParser::buildEdnsDataWithCodes({1, 2, 3}, values), hex("0001 0001 61 0003 0001 62"));
  EXPECT_THAT(log_.records(), ElementsAre("inject value: 2 left out, too long: 65527 bytes"));
  log_.clear();

  EXPECT_EQ(DNSParser::buildEdnsDataFromDict(Flags{{"65001", most + "x"}, {"65002", "b"}}),
            hex("fdea 0001 62"));
  EXPECT_THAT(
      log_.records(),
      ElementsAre("inject value: 65001 left out, too long: 65536 bytes", "inject value: 65002 : b ",
                  "dig @127.0.0.2 -p 81 +edns=0 +bufsize=4096 +ednsopt=65002:62 "));
}

TEST_F(DNSParserTest, BuildsOptionsInPairs) {
  struct Row {
    const char* what;
    std::vector<std::uint16_t> codes;
    std::vector<std::string> values;
    const char* block;
  };
  const Row rows[] = {
      {"none", {}, {}, ""},
      {"pairs, in order", {2, 1}, {"b", "a"}, "0002 0001 62 0001 0001 61"},
      {"a code twice", {1, 1}, {"a", "b"}, "0001 0001 61 0001 0001 62"},
      {"fewer values", {1, 2}, {"a"}, "0001 0001 61"},
      {"fewer codes", {1}, {"a", "b"}, "0001 0001 61"},
      {"no values", {1}, {}, ""},
  };
  for (const auto& [what, codes, values, block] : rows) {
    EXPECT_EQ(DNSParser::buildEdnsDataWithCodes(codes, values), hex(block)) << what;
  }
}

TEST_F(DNSParserTest, ReadsAKeyAsTheIntegerThatItBeginsWith) {
  struct Row {
    const char* key;
    const char* code;
  };
  const Row rows[] = {
      {"65001", "fde9"},  {"0", "0000"},     {"", "0000"},
      {"org", "0000"},    {"+", "0000"},     {"-", "0000"},
      {"7a", "0007"},     {"+7", "0007"},    {"-1", "ffff"},
      {"+-7", "0000"},    {"007", "0007"},   {"65535", "ffff"},
      {"65536", "0000"},  {"70000", "1170"}, {"18446744073709551623", "0007"},
      {"-70000", "ee90"},
  };
  for (const auto& [key, code] : rows) {
    EXPECT_EQ(DNSParser::buildEdnsDataFromDict(Flags{{key, ""}}), hex(std::string(code) + "0000"))
        << key;
  }
}

TEST_F(DNSParserTest, LogsTheOptionsOfADictionary) {
  EXPECT_EQ(DNSParser::buildEdnsDataFromDict(Flags{{"65001", "org"}, {"65007", "1"}}),
            hex("fde9 0003 6f7267 fdef 0001 31"));
  EXPECT_THAT(log_.records(), ElementsAre("inject value: 65001 : org ", "inject value: 65007 : 1 ",
                                          "dig @127.0.0.2 -p 81 +edns=0 +bufsize=4096 "
                                          "+ednsopt=65001:6f7267 +ednsopt=65007:31 "));
}

TEST_F(DNSParserTest, InjectsIntoEveryDatagramAndLogsEachStep) {
  const auto other = hex("5678 0100 0001 0000 0000 0000 01 62 00 001c 0001");
  const auto injected = DNSParser::injectFlagsToDatagrams({query(), other}, Flags{{"65007", "1"}});
  const auto injectedOther =
      hex("5678 0100 0001 0000 0000 0001 01 62 00 001c 0001"
          "01 30 00 0029 0000 00000000 0005 fdef 0001 31");
  EXPECT_THAT(injected, ElementsAre(injectedQuery(), injectedOther));
  EXPECT_THAT(log_.records(),
              ElementsAre("inject value: 65007 : 1 ",
                          "dig @127.0.0.2 -p 81 +edns=0 +bufsize=4096 +ednsopt=65007:31 ",
                          "-> dnsType1 = A", "--> a",
                          "hex data = 12340100000100000000000101610000010001"
                          "01300000290000000000000005fdef000131",
                          "-> dnsType2 = AAAA", "--> b",
                          "hex data = 567801000001000000000001016200001c0001"
                          "01300000290000000000000005fdef000131"));
}

TEST_F(DNSParserTest, InjectsCodesAndValuesWithoutALineOfItsOwn) {
  EXPECT_THAT(DNSParser::injectFlagsToDatagrams({query(), query()}, {65007}, {"1"}),
              ElementsAre(injectedQuery(), injectedQuery()));
  EXPECT_EQ(DNSParser::injectFlagsTo(query(), {65007}, {"1"}), injectedQuery());
  EXPECT_EQ(DNSParser::injectFlagsTo(query(), hex("fdef 0001 31")), injectedQuery());
  EXPECT_THAT(log_.records(), ElementsAre("-> dnsType1 = A", "--> a", "-> dnsType1 = A", "--> a",
                                          "-> dnsType1 = A", "--> a", "-> dnsType1 = A", "--> a"));
}

TEST_F(DNSParserTest, KeepsAndChanges) {
  const std::string opt = "01 30 00 0029 0000 00000000 0000";
  struct Row {
    const char* what;
    Data datagram;
    Data injected;
  };
  const Row rows[] = {
      {"no options", query(), hex("1234 0100 0001 0000 0000 0001 01 61 00 0001 0001" + opt)},
      {"no question", hex("1234 0100 0000 0000 0000 0000"),
       hex("1234 0100 0000 0000 0000 0001" + opt)},
      {"the Z bit goes, AD and CD stay", hex("1234 0170 0000 0000 0000 0000"),
       hex("1234 0130 0000 0000 0000 0001" + opt)},
      {"all other flags stay", hex("1234 ffbf 0000 0000 0000 0000"),
       hex("1234 ffbf 0000 0000 0000 0001" + opt)},
      {"a client's OPT record goes", test::sampleQueryWithOpt(),
       hex("1234 0100 0001 0000 0000 0001 03777777 076578616d706c65 03636f6d 00 001c 0001" + opt)},
      {"all additional records go",
       hex("1234 0100 0000 0000 0000 0002 00 0001 0001 00000000 0000 00 0029 0000 00000000 0000"),
       hex("1234 0100 0000 0000 0000 0001" + opt)},
      {"answers and authority records stay",
       hex("1234 8100 0000 0001 0001 0000 00 0001 0001 00000001 0001 aa 00 0002 0001 00000002 "
           "0000"),
       hex("1234 8100 0000 0001 0001 0001 00 0001 0001 00000001 0001 aa 00 0002 0001 00000002 "
           "0000" +
           opt)},
      {"a compressed name is written in full",
       hex("1234 0100 0002 0000 0000 0000 01 61 00 0001 0001 01 62 c00c 0041 0003"),
       hex("1234 0100 0002 0000 0000 0001 01 61 00 0001 0001 01 62 01 61 00 0041 0003" + opt)},
      {"octets behind the message go", hex("1234 0100 0000 0000 0000 0000 ffff"),
       hex("1234 0100 0000 0000 0000 0001" + opt)},
  };
  for (const auto& [what, datagram, injected] : rows) {
    EXPECT_EQ(DNSParser::injectFlagsTo(datagram, Data()), injected) << what;
  }
}

TEST_F(DNSParserTest, ADatagramThatIsNoMessageComesBackAsItIs) {
  const Data rows[] = {
      {},
      hex("00"),
      hex("1234 0100 0001 0000 0000 0000"),
      hex("1234 0100 0001 0000 0000 0000 c00c 0001 0001"),
      hex("1234 0100 0001 0000 0000 0000 01 80 00 0001 0001"),
  };
  for (const auto& datagram : rows) {
    EXPECT_EQ(DNSParser::injectFlagsTo(datagram, hex("fdef 0001 31")), datagram);
  }
  EXPECT_THAT(log_.records(), IsEmpty());
  EXPECT_THAT(DNSParser::injectFlagsToDatagrams({hex("00ff"), query()}, Flags{{"65007", "1"}}),
              ElementsAre(hex("00ff"), injectedQuery()));
  EXPECT_EQ(log_.records().at(2), "hex data = 00ff");
}

TEST_F(DNSParserTest, AQueryTooLongForADatagramOnceWrittenInFullComesBackAsItIs) {
  // Each further question is a pointer to the first one's name of 193 octets, written as 197.
  const auto pointers = [](std::size_t count) {
    auto message = hex("1234 0100 0000 0000 0000 0000 bf");
    message[4] = static_cast<std::uint8_t>((count + 1) >> 8);
    message[5] = static_cast<std::uint8_t>(count + 1);
    message.resize(message.size() + 191, 'a');
    const auto rest = hex("00 0001 0001");
    message.insert(message.end(), rest.begin(), rest.end());
    for (std::size_t i = 0; i < count; ++i) {
      const auto next = hex("c00c 0001 0001");
      message.insert(message.end(), next.begin(), next.end());
    }
    return message;
  };
  EXPECT_EQ(DNSParser::injectFlagsTo(pointers(331), {}).size(), 12U + 332 * 197 + 13);
  EXPECT_EQ(DNSParser::injectFlagsTo(pointers(332), {}), pointers(332));
}

TEST_F(DNSParserTest, LogsQuestionsAndTakesTheHostOfAUrl) {
  struct Row {
    const char* name;
    std::uint16_t type;
    const char* nameThen;
    const char* typeLine;  // none for nullptr
  };
  const Row rows[] = {
      {"a.b", 1, "a.b", "-> dnsType1 = A"},
      {"a.b", 28, "a.b", "-> dnsType2 = AAAA"},
      {"a.b", 65, "a.b", "-> dnsType3 = HTTPSSVC"},
      {"a.b", 65535, "a.b", "-> dnsTypeRaw = 65535"},
      {".", 2, ".", "-> dnsTypeRaw = 2"},
      {"100%.b", 1, "100%.b", "-> dnsType1 = A"},
      {"HTTP://a.b", 1, "HTTP://a.b", "-> dnsType1 = A"},
      {"http://a.b:80/c", 1, "a.b", nullptr},
      {"https://a.b", 28, "a.b", nullptr},
      {"http.a.b", 1, "http.a.b", nullptr},
      {"http://", 1, "http://", nullptr},
  };
  for (const auto& [name, type, nameThen, typeLine] : rows) {
    DNSMessage message;
    message.questions.push_back(std::make_shared<DNSQuestion>(DNSQuestion{name, type, 1}));
    const DNSMessage& same = DNSParser::checkDnsMessage(message);
    EXPECT_EQ(&same, &message);
    EXPECT_EQ(*message.questions[0], (DNSQuestion{nameThen, type, 1}));
    std::vector<std::string> lines;
    if (typeLine != nullptr) {
      lines.emplace_back(typeLine);
    }
    lines.push_back(std::string("--> ") + nameThen);
    EXPECT_EQ(log_.records(), lines) << name;
    log_.clear();
  }
}

TEST_F(DNSParserTest, WritesOctetsAsHexadecimalText) {
  EXPECT_EQ(DNSParser::hexStringForData(std::nullopt), std::nullopt);
  EXPECT_EQ(DNSParser::hexStringForData(Data()), "");
  EXPECT_EQ(DNSParser::hexStringForData(hex("000aff")), "000aff");
  Data all(256);
  std::string digits;
  for (std::size_t i = 0; i < all.size(); ++i) {
    all[i] = static_cast<std::uint8_t>(i);
    char two[3];
    std::snprintf(two, sizeof two, "%02x", static_cast<unsigned>(i));
    digits += two;
  }
  EXPECT_EQ(DNSParser::hexStringForData(all), digits);
}

}  // namespace

}  // namespace quillet
