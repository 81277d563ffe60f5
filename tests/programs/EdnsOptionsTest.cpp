#include <gtest/gtest.h>

#include "programs/quillet_demo_filter/EdnsOptions.h"
#include "tests/support/Wire.h"

namespace quillet {
namespace {

using test::hex;

TEST(EdnsOptionsTest, ReadsOptionsInTheirOrder) {
  const auto rdata = hex("fdef 0001 31 000a 0000 fde9 0003 6f 72 67");
  const auto options = readEdnsOptions(rdata);
  ASSERT_TRUE(options.has_value());
  ASSERT_EQ(options->size(), 3U);
  EXPECT_EQ((*options)[0].code, 65007);
  EXPECT_EQ(platform::textOf((*options)[0].value), "1");
  EXPECT_EQ((*options)[1].code, 10);
  EXPECT_TRUE((*options)[1].value.empty());
  EXPECT_EQ((*options)[2].code, 65001);
  EXPECT_EQ(platform::textOf((*options)[2].value), "org");
  EXPECT_TRUE(readEdnsOptions({})->empty());
}

TEST(EdnsOptionsTest, CutAtEveryLength) {
  const auto whole = hex("fdef 0001 31 fde9 0003 6f 72 67");
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    const bool isBetweenOptions = length == 0 || length == 5 || length == whole.size();
    EXPECT_EQ(readEdnsOptions(platform::DataView(whole).first(length)).has_value(),
              isBetweenOptions)
        << length;
  }
}

}  // namespace
}  // namespace quillet
