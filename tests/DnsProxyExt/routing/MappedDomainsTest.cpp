#include <gtest/gtest.h>

#include "DnsProxyExt/routing/MappedDomains.h"
#include "platform/base/Description.h"

namespace quillet {
namespace {

TEST(MappedDomains, ReadsEntries) {
  const struct {
    const char* what;
    const char* text;
    const char* map;
  } rows[] = {
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
  for (const auto& row : rows) {
    EXPECT_EQ(platform::description(parseMappedDomains(row.text)), row.map) << row.what;
  }
  EXPECT_TRUE(parseMappedDomains(std::string(1 << 20, ',')).empty());
}

}  // namespace
}  // namespace quillet
