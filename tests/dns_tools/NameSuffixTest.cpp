#include <gtest/gtest.h>

#include <string>

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

}  // namespace
