#include <gtest/gtest.h>

#include "DnsProxyExt/MappedDomains.h"
#include "platform/foundation/Description.h"

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
      {"the characters within keep all of theirs", "[č:š]", R"(["č": š:53])"},
      {"four parts", "[a:1:2:3]", R"(["a": 1:53])"},
      {"five parts", "[a:1:2:3:4]", R"(["a": 1:53])"},
      {"a port that is none", "[a:1:x,b:2:]", R"(["a": 1:53, "b": 2:53])"},
      {"a port out of range", "[a:1:70000]", R"(["a": 1:70000])"},
      {"blanks belong to what they stand in", "[a: 1, b:2 ]", R"([" b": 2 :53, "a":  1:53])"},
      {"a later entry replaces an earlier one", "[a:1,a:2]", R"(["a": 2:53])"},
      {"an entry without a colon", "[a,b:2,,c]", R"(["b": 2:53])"},
      {"empty parts", "[:,a:,:1]", R"(["": 1:53, "a": :53])"},
      {"no brackets lose a letter", "corp:10.1.1.1", R"(["orp": 10.1.1.:53])"},
      {"nothing within", "[]", "[:]"},
      {"one character", "[", "[:]"},
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
}

TEST(MappedDomains, BearsManyEntries) {
  std::string text = "[";
  for (int i = 0; i < 10'000; ++i) {
    text += "d" + std::to_string(i) + ":10.0.0.1,";
  }
  EXPECT_EQ(parseMappedDomains(text).size(), 10'000U);
  EXPECT_EQ(parseMappedDomains(std::string(1 << 20, ',')).size(), 0U);
  EXPECT_EQ(parseMappedDomains(std::string(1 << 20, ':')).size(), 1U);
}

}  // namespace
}  // namespace quillet
