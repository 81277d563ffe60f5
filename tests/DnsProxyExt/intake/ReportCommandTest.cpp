#include <gtest/gtest.h>

#include "DnsProxyExt/intake/ReportCommand.h"
#include "platform/base/Description.h"

namespace quillet {
namespace {

TEST(ReportCommand, ReadsTheParameters) {
  const std::tuple<const char*, std::string, std::string, bool> rows[] = {
      {"tf_300_d_x.example.", "Optional(300)", "nil", true},
      {"tf_300_d.example.", "Optional(300)", "nil", false},
      {"tf_-5", "Optional(-5)", "nil", false},
      {"tf_99999999999999999999", "nil", "nil", false},
      {"p_a_p_b", "nil", "Optional(\"b\")", false},
      {"p_tf_9", "Optional(9)", "Optional(\"tf\")", false},
      {"p_d", "nil", "Optional(\"d\")", true},
      {"p", "nil", "nil", false},
      {"tf_d", "nil", "nil", true},
      {"tf_5_tf", "Optional(5)", "nil", false},
      {"p_", "nil", "Optional(\"\")", false},
  };
  for (const auto& [text, seconds, package, detailed] : rows) {
    const auto settings = reportParameters(text);
    EXPECT_EQ(platform::description(settings.forLastSecs), seconds) << text;
    EXPECT_EQ(platform::description(settings.package), package) << text;
    EXPECT_EQ(settings.detailed, detailed) << text;
  }
}

}  // namespace
}  // namespace quillet
