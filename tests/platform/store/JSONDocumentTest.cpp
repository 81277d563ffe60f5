#include "platform/store/JSONDocument.h"
#include "tests/platform/Test.h"

namespace platform::test {

std::string nested(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

/// The value as compact text and what was left out of it, or why there is none.
std::string outcome(const std::string& text) {
  const auto document = parseJSON(text);
  if (!document) {
    return textOf(document.error());
  }
  std::string result = document->value.dump();
  for (const auto& [object, member, fault] : document->leftOut) {
    result.append(" " + member + ": " + textOf(fault));
  }
  return result;
}

TEST(JSONDocumentTest, ReadsWhatIsJSONAndLeavesOutWhatGoesBeyondABound) {
  const std::string tooDeep = ": nested deeper than 64";
  const std::string tooLarge = ": a number too large";
  expectEach(
      outcome,
      {{nested(64), nested(64)},
       {R"({"a":)" + nested(64) + R"(,"b":2})", R"({"b":2} a)" + tooDeep},
       {R"({"a":1,"b":[3,)" + nested(100'000) + R"(,4],"c":"2"})",
        R"({"a":1,"c":"2"} b)" + tooDeep},
       {R"([{"a":)" + nested(64) + R"(,"b":[true]},null])", R"([{"b":[true]},null] a)" + tooDeep},
       {R"({"a":{"b":{"c":[[1,1e999],{}],"d":[]}}})", R"({"a":{"b":{"d":[]}}} c)" + tooLarge},
       {R"({"a":1e999,"b":-1E-999,"c":1e308,"d":"\"1e999","e":18446744073709551616})",
        R"({"b":-0.0,"c":1e+308,"d":"\"1e999","e":1.8446744073709552e+19} a)" + tooLarge},
       {R"({"a":[)" + nested(64) + R"(,1e999,{"x":1e999}],"b":[0,1e999]})",
        "{} a" + tooDeep + " b" + tooLarge},
       {R"({"a":{"x":1},"a":1e999})", "{} a" + tooLarge},
       {R"({"a":1e999,"a":1})", R"({"a":1} a)" + tooLarge},
       {R"(["\\\")" + std::string(1000, '[') + "\"]", R"(["\\\")" + std::string(1000, '[') + "\"]"},
       {R"(["\\",)" + nested(64) + "]", "nested deeper than 64"},
       {std::string(400, '9'), "a number too large"},
       {std::string((1 << 20) + 1, ' '), "larger than 1048576 bytes"}});
}

// Beside what the library itself refuses: what follows a NUL, and numbers that only look too large.
TEST(JSONDocumentTest, RefusesWhatIsNoJSON) {
  for (const auto& text :
       {"{}\0"s, "{}\0garbage"s, "\"\0\""s, "\"\xFF\""s, R"({"a":01e999})"s, "-.1e999"s, "1.e999"s,
        "+1e999"s, "1e999-"s, "[1e999 1]"s, nested(65) + "]"s, std::string(100'000, '[')}) {
    EXPECT_EQ(outcome(text), "not valid JSON") << testing::PrintToString(text);
  }
}

TEST(JSONDocumentTest, TellsWhichObjectLacksAMember) {
  const auto document =
      parseJSON(R"([{"a":1e999},{"b":0},[{"a":[1e999]}],{"a":[{"b":1e999},1e999],"c":{}}])");
  ASSERT_TRUE(document);
  const auto fault = [&](const JSONValue& value, std::string_view member) {
    return document->faultOf(value.get_ref<const JSONObject&>(), member).has_value();
  };
  EXPECT_TRUE(fault(document->value[0], "a"));
  EXPECT_FALSE(fault(document->value[0], "b"));
  EXPECT_FALSE(fault(document->value[1], "a"));
  EXPECT_TRUE(fault(document->value[2][0], "a"));
  EXPECT_FALSE(fault(document->value[3]["c"], "b")) << "another object had it";
}

}  // namespace platform::test
