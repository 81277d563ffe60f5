#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dns_tools/NameSuffix.h"

namespace {

using DnsToolsSocket::NameSuffix;

TEST(NameSuffix, GivesItsLabelsAndWhatIsLeft) {
  NameSuffix name("www.example.com.");
  EXPECT_EQ(name.text(), "www.example.com");
  EXPECT_EQ(name.takeLabel(), "www");
  EXPECT_EQ(name.text(), "example.com");
  EXPECT_EQ(name.takeLabel(), "example");
  EXPECT_EQ(name.takeLabel(), "com");
  EXPECT_TRUE(name.empty());
}

TEST(NameSuffix, HasTheHashThatItsTextHasAsAName) {
  const auto longLabels = std::string(70, 'x').append(".a.").append(70, 'y');
  for (const auto& text : {std::string("a.b.c"), std::string("www.example.com."), longLabels}) {
    NameSuffix rest(text);
    static_cast<void>(rest.hash());
    while (!rest.empty()) {
      EXPECT_EQ(rest.hash(), NameSuffix(rest.text()).hash()) << rest.text();
      rest.takeLabel();
    }
  }
}

TEST(NameSuffix, HasAHashOfItsOwn) {
  const std::vector<std::string> texts{"a",    "b",        "aa",      "a.a",
                                       "a.b",  "b.a",      "ab",      ".a",
                                       "a..a", "aaaaaaaa", "aaaaaaa", std::string(1, '\0'),
                                       ""};
  for (const auto& one : texts) {
    for (const auto& other : texts) {
      EXPECT_EQ(NameSuffix(one).hash() == NameSuffix(other).hash(), one == other)
          << one << " " << other;
    }
  }
}

TEST(NameSuffix, KnowsEmptyLabels) {
  for (const auto* name : {".a", "a..b", "a..", "..", ".a."}) {
    EXPECT_TRUE(NameSuffix(name).hasEmptyLabel()) << name;
  }
  for (const auto* name : {"", ".", "a", "a.", "a.b", "a.b."}) {
    EXPECT_FALSE(NameSuffix(name).hasEmptyLabel()) << name;
  }
}

}  // namespace
