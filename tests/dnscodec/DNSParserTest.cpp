#include "dnscodec/DNSParser.h"
#include "tests/dnscodec/Samples.h"
#include "tests/support/Test.h"

namespace quillet::test {

using Flags = DNSParser::Flags;

// id 0x1234, RD, a A IN
Data query() { return hex("1234 0100 0001 0000 0000 0000 01 61 00 0001 0001"); }

/// The same with an OPT record and these options, their length first.
Data queryWith(const std::string& options) {
  return hex("1234 0100 0001 0000 0000 0001 01 61 00 0001 0001 01 30 00 0029 0000 00000000" +
             options);
}

// With option 65007 and the text "1".
Data injectedQuery() { return queryWith("0005 fdef 0001 31"); }

class DNSParserTest : public testing::Test {
 protected:
  LogCapture log_;
};

TEST_F(DNSParserTest, BuildsOptionsInPairs) {
  EXPECT_EQ(DNSParser::buildEdnsDataWithCodes({2, 0xFDE9, 1, 1}, {"b", "caf\xC3\xA9", "a"}),
            hex("0002 0001 62 fde9 0005 636166c3a9 0001 0001 61"));
  EXPECT_EQ(DNSParser::buildEdnsDataWithCodes({1}, {"a", "b"}), hex("0001 0001 61"));
  EXPECT_EQ(DNSParser::hexStringForData(std::nullopt), std::nullopt);
}

TEST_F(DNSParserTest, LeavesOutAValueThatIsTooLong) {
  const auto option = DNSParser::buildEdnsDataWithCode(65001, std::string(65535, 'x'));
  EXPECT_EQ(option.size(), 65539U);
  EXPECT_TRUE(option[2] == 0xFF && option[3] == 0xFF);
  EXPECT_THAT(log_.records(), IsEmpty());

  // One after which another has no room, beside one that has.
  const std::vector<std::string> values{"a", std::string(65527, 'x'), "b"};
  EXPECT_EQ(DNSParser::buildEdnsDataWithCodes({1, 2, 3}, values), hex("0001 0001 61 0003 0001 62"));
  EXPECT_THAT(log_.records(), ElementsAre("inject value: 2 left out, too long: 65527 bytes"));
  log_.clear();

  const Flags flags{{"65001", "org"}, {"65002", std::string(65536, 'x')}, {"65007", "1"}};
  EXPECT_EQ(DNSParser::buildEdnsDataFromDict(flags), hex("fde9 0003 6f7267 fdef 0001 31"));
  EXPECT_EQ(log_.records()[1], "inject value: 65002 left out, too long: 65536 bytes");
  EXPECT_EQ(log_.records()[3],
            "dig @127.0.0.2 -p 81 +edns=0 +bufsize=4096 +ednsopt=65001:6f7267 +ednsopt=65007:31 ");
  log_.clear();

  EXPECT_EQ(DNSParser::injectFlagsTo(query(), Data(65536)), queryWith("0000"));
  EXPECT_EQ(log_.records().front(), "inject value: all left out, too long: 65536 bytes");
}

TEST_F(DNSParserTest, ReadsAKeyAsTheIntegerThatItBeginsWith) {
  expectEach<std::string, Data>(
      [](const auto& key) {
        return DNSParser::buildEdnsDataFromDict(Flags{{key, ""}});
      },
      {{"65001", hex("fde9 0000")},
       {"", hex("0000 0000")},
       {"org", hex("0000 0000")},
       {"7 ", hex("0007 0000")},
       {"+7", hex("0007 0000")},
       {"-1", hex("ffff 0000")},
       {"+-7", hex("0000 0000")},
       {"65536", hex("0000 0000")},
       {"70000", hex("1170 0000")},
       {"7:", hex("0007 0000")},
       {"18446744073709551623", hex("0007 0000")}});
}

TEST_F(DNSParserTest, InjectsIntoEveryDatagram) {
  const std::vector<Data> two{query(), query()};
  const auto injected = ElementsAre(injectedQuery(), injectedQuery());
  EXPECT_THAT(DNSParser::injectFlagsToDatagrams(two, Flags{{"65007", "1"}}), injected);
  log_.clear();
  EXPECT_THAT(DNSParser::injectFlagsToDatagrams(two, {65007}, {"1"}), injected);
  EXPECT_THAT(log_.records(), ElementsAre("-> dnsType1 = A", "--> a", "-> dnsType1 = A", "--> a"));
}

TEST_F(DNSParserTest, ReplacesTheAdditionalSectionOrKeepsWhatItCannotDecode) {
  const std::string records = "00 0001 0001 00000001 0001 aa 00 0002 0001 00000002 0000";
  const std::string opt = "01 30 00 0029 0000 00000000 0005 fdef 0001 31";
  const std::string kept = "inject: query cannot be decoded, its question octets are kept";
  const std::string without = "inject: query cannot be decoded, it goes out without identity";
  const std::tuple<std::string, std::string, std::string> rows[] = {
      // The Z bit goes, all others stay.
      {"1234 ffff 0000 0000 0000 0000", "1234 ffbf 0000 0000 0000 0001" + opt, ""},
      {"1234 0100 0000 0000 0000 0002" + records, "1234 0100 0000 0000 0000 0001" + opt, ""},
      {"1234 8100 0000 0001 0001 0000" + records, "1234 8100 0000 0001 0001 0001" + records + opt,
       ""},
      // A compressed name is written in full.
      {"1234 0100 0002 0000 0000 0000 01 61 00 0001 0001 01 62 c00c 0041 0003",
       "1234 0100 0002 0000 0000 0001 01 61 00 0001 0001 01 62 01 61 00 0041 0003" + opt,
       "--> b.a"},
      {"1234 0140 0001 0000 0000 0000 01 80 00 0001 0001",
       "1234 0100 0001 0000 0000 0001 01 80 00 0001 0001" + opt, kept},
      {"1234 0100 0002 0000 0000 0000 bf" + std::string(382, '8') +
           "00 0001 0001 01 61 c00c 0041 0003",
       "1234 0100 0002 0000 0000 0001 bf" + std::string(382, '8') +
           "00 0001 0001 01 61 c00c 0041 0003" + opt,
       kept},
      {"1234 0100 0001 0001 0002 0003 01 61 00 0001 0001 0130",
       "1234 0100 0001 0000 0000 0001 01 61 00 0001 0001" + opt, kept},
      {"00ff", "00ff", without},
      {"1234 0100 0001 0000 0000 0001", "1234 0100 0001 0000 0000 0001", without}};
  for (const auto& [datagram, injected, record] : rows) {
    log_.clear();
    EXPECT_EQ(DNSParser::injectFlagsTo(hex(datagram), hex("fdef 0001 31")), hex(injected));
    EXPECT_EQ(log_.records().empty() ? "" : log_.records().back(), record) << datagram;
  }
  // The last three point into the header, at themselves and ahead.
  for (const std::string question :
       {"01 80 00 0001 00", "02 80 00 0001 00", "01 80 c0", "01 80 c00b 0001 0001",
        "01 80 c00e 0001 0001", "01 80 c013 0001 0001 00"}) {
    const auto datagram = hex("1234 0100 0001 0000 0000 0001" + question);
    EXPECT_EQ(DNSParser::injectFlagsTo(datagram, Data()), datagram) << question;
    EXPECT_EQ(log_.records().back(), without);
  }
}

TEST_F(DNSParserTest, KeepsTheQuestionOctetsThatAreTooLongWrittenInFull) {
  // Written, that are 252 questions of 259 octets, and a record of 13 and the options.
  const auto query = pointingQuestions(251);
  EXPECT_EQ(DNSParser::injectFlagsTo(query, Data(214)).size(), 65507U);
  auto kept = query;
  kept[11] = 1;
  const auto opt = hex("01 30 00 0029 0000 00000000 00d7");
  kept.insert(kept.end(), opt.begin(), opt.end());
  kept.resize(kept.size() + 215);
  EXPECT_EQ(DNSParser::injectFlagsTo(query, Data(215)), kept);
  EXPECT_EQ(log_.records().back(),
            "inject: query is too long written in full, its question octets are kept");
  EXPECT_EQ(DNSParser::injectFlagsTo(query, Data(65'000)), query) << "no datagram carries it";
}

TEST_F(DNSParserTest, LogsQuestionsAndTakesTheHostOfAUrl) {
  const std::tuple<const char*, std::uint16_t, std::vector<std::string>> rows[] = {
      {"a.b", 28, {"-> dnsType2 = AAAA", "--> a.b"}},
      {"a.b", 65, {"-> dnsType3 = HTTPSSVC", "--> a.b"}},
      {"100%.b", 65535, {"-> dnsTypeRaw = 65535", "--> 100%.b"}},
      {"HTTP://a.b", 1, {"-> dnsType1 = A", "--> HTTP://a.b"}},
      {"http://a.b:80/c", 1, {"--> a.b"}},
      {"a.http.b", 1, {"--> a.http.b"}},
      {"http://", 1, {"--> http://"}}};
  for (const auto& [name, type, lines] : rows) {
    DNSMessage message;
    message.questions.push_back(std::make_shared<DNSQuestion>(DNSQuestion{name, type, 1}));
    EXPECT_EQ(&DNSParser::checkDnsMessage(message), &message);
    EXPECT_EQ(log_.records(), lines);
    EXPECT_EQ("--> " + message.questions[0]->name, lines.back());
    log_.clear();
  }
}

}  // namespace quillet::test
