#include "platform/store/JSONDocument.h"
#include "tests/platform/Test.h"

namespace platform::test {

TEST(JSONValueTest, PrintsEachKind) {
  const std::pair<const char*, std::string> rows[] = {
      {R"("a\"b")", R"("a\"b")"},
      {"18446744073709551615", "18446744073709551615"},
      {"[-5,-5.0]", "[-5, -5.0]"},
      {"{}", "[:]"},
      {R"({"b":["x",1,null],"a":{"c":false}})", R"(["a": ["c": false], "b": ["x", 1, <null>]])"},
  };
  for (const auto& [text, inside] : rows) {
    EXPECT_EQ(description(std::optional(parseJSON(text)->value)), "Optional(" + inside + ")");
  }
  EXPECT_EQ(description(parseJSON(R"("a\"b")")->value), "a\"b");
  EXPECT_EQ(description(parseJSON("null")->value), "<null>");
}

}  // namespace platform::test
