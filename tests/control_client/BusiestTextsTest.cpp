#include "control_client/BusiestTexts.h"
#include "tests/support/Test.h"

namespace quilletctl::test {

using namespace quillet::test;

using testing::Pair;

TEST(BusiestTextsTest, KeepsWhatComesOftenThoughMuchElseComesOnce) {
  BusiestTexts texts;
  for (std::size_t i = 0; i < 20 * BusiestTexts::kMaxTexts; ++i) {
    texts.add("once " + std::to_string(i));
    if (i % 10 == 0) {  // more often than one of kMaxTexts: cannot be lost
      texts.add("busy");
    }
    if (i % 20 == 0) {
      texts.add("less busy");
    }
  }
  const auto first = texts.first(2);
  EXPECT_THAT(first, ElementsAre(Pair(testing::Ge(2 * BusiestTexts::kMaxTexts), "busy"),
                                 Pair(testing::Ge(BusiestTexts::kMaxTexts), "less busy")));
  EXPECT_EQ(texts.first(20 * BusiestTexts::kMaxTexts).size(), BusiestTexts::kMaxTexts);
}

}  // namespace quilletctl::test
