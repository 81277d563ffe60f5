#include <gtest/gtest.h>

#include "DnsProxyExt/routing/DomainMap.h"
#include "platform/base/Description.h"

namespace quillet {
namespace {

DNSHostRef host(const char* text) { return std::make_shared<Utils::DNSHost>(text); }

TEST(DomainMap, FindsTheMostParticularFragment) {
  const DomainMap map{{"corp", host("1")},  {"wiki.corp", host("2")}, {"Lab", host("3")},
                      {"x.org", host("4")}, {"y.org", host("5")},     {"", host("6")}};
  const struct {
    const char* domain;
    const char* server;
  } rows[] = {
      {"corp", "1:53"},
      {"corporation.org", "1:53"},
      {"corp.wiki.corp.corp", "2:53"},
      {"Lab", "3:53"},
      {"lab", "nil"},
      {"cor", "nil"},
      {"", "nil"},
      {"x.orgy.org", "4:53"},
      {"y.orgx.org", "5:53"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(platform::description(map.server(row.domain)), row.server) << row.domain;
  }
}

TEST(DomainMap, SearchesTheEndOfALongText) {
  const DomainMap map{{"corp", host("1")}};
  EXPECT_NE(map.server("corp" + std::string(1020, 'b')), nullptr);
  EXPECT_EQ(map.server("corp" + std::string(1021, 'b')), nullptr);
  EXPECT_NE(map.server(std::string(60'000, 'b') + "corp"), nullptr);
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

}  // namespace
}  // namespace quillet
