#include "platform/store/JSONDocument.h"
#include "tests/platform/Test.h"

namespace platform::test {

TEST(JSONValueTest, PrintsEachKind) {
  const auto printed = [](const std::string& text) {
    return description(std::optional(parseJSON(text)->value));
  };
  expectEach(printed, {{R"("a\"b")", R"(Optional("a\"b"))"},
                       {"18446744073709551615", "Optional(18446744073709551615)"},
                       {"[-5,-5.0]", "Optional([-5, -5.0])"},
                       {"{}", "Optional([:])"},
                       {R"({"b":["x",1,null],"a":{"c":false}})",
                        R"(Optional(["a": ["c": false], "b": ["x", 1, <null>]]))"}});
  EXPECT_EQ(description(parseJSON(R"("a\"b")")->value), "a\"b");
  EXPECT_EQ(description(parseJSON("null")->value), "<null>");
}

}  // namespace platform::test
