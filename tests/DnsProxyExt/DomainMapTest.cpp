#include <gtest/gtest.h>

#include "DnsProxyExt/DomainMap.h"
#include "platform/foundation/Description.h"

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
      {"a.corp", "1:53"},
      {"corporation.org", "1:53"},
      {"wiki.corp", "2:53"},
      {"corp.wiki.corp.corp", "2:53"},
      {"Lab", "3:53"},
      {"lab", "nil"},
      {"LAB", "nil"},
      {"cor", "nil"},
      {"", "nil"},
      {"x.orgy.org", "4:53"},
      {"y.orgx.org", "5:53"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(platform::description(map.server(row.domain)), row.server) << row.domain;
  }
}

TEST(DomainMap, LooksNoLongerThanANameIs) {
  const DomainMap map{{"a", host("1")}, {std::string(255, 'b'), host("2")}};
  const std::string longest(255, 'b');
  EXPECT_EQ(platform::description(map.server(longest)), "2:53");
  EXPECT_EQ(platform::description(map.server(longest.substr(1) + "a")), "1:53");
  EXPECT_EQ(map.server(longest + "a"), nullptr);
  EXPECT_EQ(map.server(std::string(1 << 22, 'a')), nullptr);
}

TEST(DomainMap, AgreesWithASearchOfEachFragment) {
  const char* const fragments[] = {"a", "ab", "b.c", "abc", "c.a", "cc", "bca.", "a.b.c"};
  DomainMap map;
  for (const auto* fragment : fragments) {
    map.set(fragment, host(fragment));
  }
  // Every text of up to six of these letters.
  constexpr std::string_view kLetters = "abc.";
  for (std::size_t number = 1; number < 4096; ++number) {
    std::string domain;
    for (auto rest = number; rest > 1; rest /= 4) {
      domain.push_back(kLetters[rest % 4]);
    }
    std::size_t longest = 0;
    for (const std::string_view fragment : fragments) {
      if (domain.find(fragment) != std::string::npos) {
        longest = std::max(longest, fragment.size());
      }
    }
    const auto found = map.server(domain);
    ASSERT_EQ(found ? found->address.size() : 0, longest) << domain;
    ASSERT_TRUE(!found || domain.find(found->address) != std::string::npos) << domain;
  }
}

}  // namespace
}  // namespace quillet
