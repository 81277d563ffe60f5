#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/foundation/JSONValue.h"

namespace platform {
namespace {

using namespace std::string_literals;

std::string nested(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

TEST(JSONValueTest, printedForms) {
  const struct {
    const char* text;
    const char* plain;
    const char* inside;
  } rows[] = {
      {R"("a\"b")", "a\"b", R"("a\"b")"},
      {"null", "<null>", "<null>"},
      {"18446744073709551615", "18446744073709551615", "18446744073709551615"},
      {"2.0", "2.0", "2.0"},
      {"{}", "[:]", "[:]"},
      {R"({"b":["x",1,null],"a":{"c":false}})", R"(["a": ["c": false], "b": ["x", 1, <null>]])",
       R"(["a": ["c": false], "b": ["x", 1, <null>]])"},
  };
  for (const auto& row : rows) {
    const auto value = parseJSON(row.text);
    ASSERT_TRUE(value) << row.text;
    EXPECT_EQ(description(*value), row.plain);
    EXPECT_EQ(description(std::optional(*value)), "Optional("s + row.inside + ")");
  }
}

TEST(JSONValueTest, whatIsNoJSON) {
  const std::string rows[] = {
      "",         " ",        "{",      "[1,]",  "{\"a\":1,}",    "{'a':1}",     "nul",
      "NaN",      "01",       "1e999",  "[1] 2", "// comment\n1", "\"\\ud800\"", "\"\n\"",
      "\"\xFF\"", "\xC0\x80", "{}\xFF", "{}\0"s, "{}\0garbage"s,  "\"\0\""s,
  };
  for (const auto& row : rows) {
    EXPECT_FALSE(parseJSON(row)) << testing::PrintToString(row);
  }
}

TEST(JSONValueTest, everyCutOfAnObjectIsRefused) {
  const std::string text = R"({"a":["\u00e9\\",-1.5e3,true,null,{}]})";
  EXPECT_TRUE(parseJSON(text));
  for (std::size_t length = 0; length < text.size(); ++length) {
    EXPECT_FALSE(parseJSON(text.substr(0, length))) << length;
  }
}

TEST(JSONValueTest, depthIsBounded) {
  EXPECT_TRUE(parseJSON(nested(64)));
  EXPECT_FALSE(parseJSON(nested(65)));
  // Brackets within strings do not count, whatever stands before them.
  EXPECT_TRUE(parseJSON("[\"" + std::string(1000, '[') + "\"]"));
  EXPECT_TRUE(parseJSON(R"(["\\\")" + std::string(1000, '[') + "\"]"));
  EXPECT_FALSE(parseJSON(R"(["\\",)" + nested(64) + "]"));
  EXPECT_TRUE(parseJSON(R"(["\\",)" + nested(63) + "]"));
}

}  // namespace
}  // namespace platform
