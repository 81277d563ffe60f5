#include "DnsProxyExt/routing/MappedDomains.h"
#include "tests/DnsProxyExt/StageTest.h"

namespace quillet::test {

TEST(DNSHost, ReadsAddressAndPort) {
  expectEach([](const auto& text) { return description(Utils::DNSHost(text)); },
             {{"10.0.0.1:5353", "10.0.0.1:5353"},
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
              {"", ":53"}});
}

TEST(DomainMap, FindsTheMostParticularFragment) {
  const DomainMap map{{"corp", hostAt("1")},  {"wiki.corp", hostAt("2")}, {"Lab", hostAt("3")},
                      {"x.org", hostAt("4")}, {"y.org", hostAt("5")},     {"", hostAt("6")}};
  expectEach([&](const auto& domain) { return description(map.server(domain)); },
             {{"corp", "1:53"},
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
              {std::string(60'000, 'b') + "corp", "1:53"}});
}

TEST(DomainMap, PrintsSoMuchOnly) {
  const auto server = hostAt(std::string(30'000, '1'));
  DomainMap map;
  for (int i = 0; i < 100; ++i) {
    map.set(std::to_string(i), server);
  }
  const auto text = description(map);
  EXPECT_LT(text.size(), DomainMap::kMaxPrinted + 40'000);
  EXPECT_TRUE(text.ends_with(", ...]"));
}

TEST(MappedDomains, ReadsEntries) {
  expectEach(
      [](const auto& text) { return description(parseMappedDomains(text)); },
      {{"[corp:10.1.1.1,lab:10.1.1.2:5300]", R"(["corp": 10.1.1.1:53, "lab": 10.1.1.2:5300])"},
       {"xa:1y", R"(["a": 1:53])"},
       {"„a:1😀", R"(["a": 1:53])"},
       {"[a:1:2:3]", R"(["a": 1:53])"},
       {"[a:1:x,b:2:]", R"(["a": 1:53, "b": 2:53])"},
       {"[a: 1, b:2 ]", R"([" b": 2 :53, "a":  1:53])"},
       {"[a:1,a:2]", R"(["a": 2:53])"},
       {"[a,b:2,,c]", R"(["b": 2:53])"},
       {"[:,a:,:1]", R"(["": 1:53, "a": :53])"},
       {"corp:10.1.1.1", R"(["orp": 10.1.1.:53])"},
       {"[]", "[:]"},
       {"😀", "[:]"},
       {"", "[:]"},
       {"\xFF"
        "a:1\xC3",
        R"(["a": 1:53])"}});
  EXPECT_TRUE(parseMappedDomains(std::string(1 << 20, ',')).empty());
}

}  // namespace quillet::test
