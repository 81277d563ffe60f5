#include <map>

#include "tests/platform/Test.h"

namespace platform::test {

TEST(DescriptionTest, PrintsFractions) {
  expectEach<double>([](double value) { return description(value); },
                     {{-0.0, "-0.0"},
                      {0.0001, "0.0001"},
                      {0.00001, "1e-05"},
                      {1e15, "1000000000000000.0"},
                      {1e16, "1e+16"},
                      {-1.7976931348623157e308, "-1.7976931348623157e+308"}});
}

TEST(DescriptionTest, QuotesTextsInsideOtherValuesOnly) {
  EXPECT_EQ(description("a\"b"), "a\"b");
  EXPECT_EQ(description(static_cast<const char*>(nullptr)), "nil");
  EXPECT_EQ(description(std::vector{"a\"\\b"s, "\n\r\t\0\x01\x1F\x7F"s + "é"}),
            "[\"a\\\"\\\\b\", \"\\n\\r\\t\\0\\u{01}\\u{1F}\\u{7F}é\"]");
}

TEST(DescriptionTest, PrintsWhatMayBeAbsentAndContainers) {
  EXPECT_EQ(description(std::nullopt), "nil");
  EXPECT_EQ(description(std::make_unique<std::string>("a")), "a");
  EXPECT_EQ(description(std::shared_ptr<int>()), "nil");
  EXPECT_EQ(description(std::map<std::string, int>()), "[:]");
  EXPECT_EQ(description(std::map<std::string, std::optional<int>>{{"a", 1}, {"b", std::nullopt}}),
            R"(["a": Optional(1), "b": nil])");
  EXPECT_EQ(description(std::optional(std::vector<Data>{{}, {1, 2}})),
            "Optional([0 bytes, 2 bytes])");
  EXPECT_LT(description(std::vector(2, std::vector(100'000, 1))).size(), 262144 + 10U);
}

}  // namespace platform::test
