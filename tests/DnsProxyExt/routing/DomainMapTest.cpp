#include <gtest/gtest.h>

#include "DnsProxyExt/routing/MappedDomains.h"
#include "platform/base/Description.h"

namespace quillet {
namespace {

DNSHostRef host(const char* text) { return std::make_shared<Utils::DNSHost>(text); }

TEST(DNSHost, ReadsAddressAndPort) {
  const std::pair<const char*, const char*> rows[] = {
      {"10.0.0.1:5353", "10.0.0.1:5353"},
      {"10.0.0.1", "10.0.0.1:53"},
      {"10.0.0.1:", "10.0.0.1:53"},
      {"10.0.0.1:53x", "10.0.0.1:53"},
      {"10.0.0.1: 53", "10.0.0.1:53"},
      {"10.0.0.1:+99", "10.0.0.1:99"},
      {"10.0.0.1:-1", "10.0.0.1:-1"},
      {"10.0.0.1:+-1", "10.0.0.1:53"},
      {"10.0.0.1:70000", "10.0.0.1:70000"},
      {"10.0.0.1:99999999999999999999", "10.0.0.1:53"},
      {"10.0.0.1:54:99", "10.0.0.1:54"},
      {"fe80::1", "fe80:53"},
      {"", ":53"},
  };
  for (const auto& [text, printed] : rows) {
    EXPECT_EQ(platform::description(Utils::DNSHost(text)), printed) << text;
  }
}

TEST(DomainMap, FindsTheMostParticularFragment) {
  const DomainMap map{{"corp", host("1")},  {"wiki.corp", host("2")}, {"Lab", host("3")},
                      {"x.org", host("4")}, {"y.org", host("5")},     {"", host("6")}};
  const std::pair<std::string, const char*> rows[] = {
      {"corp", "1:53"},
      {"corporation.org", "1:53"},
      {"corp.wiki.corp.corp", "2:53"},
      {"Lab", "3:53"},
      {"lab", "nil"},
      {"cor", "nil"},
      {"", "nil"},
      {"x.orgy.org", "4:53"},
      {"y.orgx.org", "5:53"},
      // Of a long text the end is searched.
      {"corp" + std::string(1020, 'b'), "1:53"},
      {"corp" + std::string(1021, 'b'), "nil"},
      {std::string(60'000, 'b') + "corp", "1:53"},
  };
  for (const auto& [domain, server] : rows) {
    EXPECT_EQ(platform::description(map.server(domain)), server) << domain;
  }
}

TEST(DomainMap, PrintsSoMuchOnly) {
  const auto server = std::make_shared<Utils::DNSHost>(std::string(30'000, '1'));
  DomainMap map;
  for (int i = 0; i < 100; ++i) {
    map.set(std::to_string(i), server);
  }
  const auto text = platform::description(map);
  EXPECT_LT(text.size(), DomainMap::kMaxPrinted + 40'000);
  EXPECT_TRUE(text.ends_with(", ...]"));
}

TEST(MappedDomains, ReadsEntries) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"two entries", "[corp:10.1.1.1,lab:10.1.1.2:5300]",
       R"(["corp": 10.1.1.1:53, "lab": 10.1.1.2:5300])"},
      {"any enclosing characters", "xa:1y", R"(["a": 1:53])"},
      {"enclosing characters of several bytes", "„a:1😀", R"(["a": 1:53])"},
      {"four parts", "[a:1:2:3]", R"(["a": 1:53])"},
      {"a port that is none", "[a:1:x,b:2:]", R"(["a": 1:53, "b": 2:53])"},
      {"blanks belong to what they stand in", "[a: 1, b:2 ]", R"([" b": 2 :53, "a":  1:53])"},
      {"a later entry replaces an earlier one", "[a:1,a:2]", R"(["a": 2:53])"},
      {"an entry without a colon", "[a,b:2,,c]", R"(["b": 2:53])"},
      {"empty parts", "[:,a:,:1]", R"(["": 1:53, "a": :53])"},
      {"no brackets lose a letter", "corp:10.1.1.1", R"(["orp": 10.1.1.:53])"},
      {"nothing within", "[]", "[:]"},
      {"one character of several bytes", "😀", "[:]"},
      {"no text", "", "[:]"},
      {"bytes that are no text",
       "\xFF"
       "a:1\xC3",
       R"(["a": 1:53])"},
  };
  for (const auto& [what, text, map] : rows) {
    EXPECT_EQ(platform::description(parseMappedDomains(text)), map) << what;
  }
  EXPECT_TRUE(parseMappedDomains(std::string(1 << 20, ',')).empty());
}

}  // namespace
}  // namespace quillet
