#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/foundation/JSONValue.h"

namespace platform {
namespace {

using namespace std::string_literals;

std::string nested(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

TEST(JSONValueTest, printedForms) {
  const std::pair<const char*, std::string> rows[] = {
      {R"("a\"b")", R"("a\"b")"},
      {"18446744073709551615", "18446744073709551615"},
      {"[-5,-5.0]", "[-5, -5.0]"},
      {"{}", "[:]"},
      {R"({"b":["x",1,null],"a":{"c":false}})", R"(["a": ["c": false], "b": ["x", 1, <null>]])"},
  };
  for (const auto& [text, inside] : rows) {
    EXPECT_EQ(description(parseJSON(text)), "Optional(" + inside + ")");
  }
  EXPECT_EQ(description(parseJSON(R"("a\"b")").value()), "a\"b");
  EXPECT_EQ(description(parseJSON("null").value()), "<null>");
}

TEST(JSONValueTest, whatIsNoJSON) {
  for (const auto& text :
       {"[1,]"s, "{'a':1}"s, "NaN"s, "01"s, "1e999"s, "[1] 2"s, "// comment\n1"s, "\"\\ud800\""s,
        "\"\n\""s, "\"\xFF\""s, "{}\xFF"s, "{}\0"s, "{}\0garbage"s, "\"\0\""s}) {
    EXPECT_FALSE(parseJSON(text)) << testing::PrintToString(text);
  }
}

TEST(JSONValueTest, depthIsBounded) {
  EXPECT_TRUE(parseJSON(nested(64)));
  EXPECT_FALSE(parseJSON(nested(65)));
  // Brackets within strings do not count, whatever stands before them.
  EXPECT_TRUE(parseJSON(R"(["\\\")" + std::string(1000, '[') + "\"]"));
  EXPECT_FALSE(parseJSON(R"(["\\",)" + nested(64) + "]"));
}

}  // namespace
}  // namespace platform
