#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "DnsProxyExt/intake/ReportCommand.h"

namespace quillet {
namespace {

TEST(ReportCommand, ReadsTheParameters) {
  const struct {
    const char* text;
    std::optional<std::int64_t> forLastSecs;
    std::optional<std::string> package;
    bool detailed;
  } rows[] = {
      {"tf_300_d_x.example.", 300, {}, true},
      {"tf_300_d.example.", 300, {}, false},
      {"tf_-5", -5, {}, false},
      {"tf_99999999999999999999", {}, {}, false},
      {"p_a_p_b", {}, "b", false},
      {"p_tf_9", 9, "tf", false},
      {"p_d", {}, "d", true},
      {"p", {}, {}, false},
      {"tf_d", {}, {}, true},
      {"tf_5_tf", 5, {}, false},
      {"p_", {}, "", false},
  };
  for (const auto& row : rows) {
    const auto settings = reportParameters(row.text);
    EXPECT_EQ(settings.forLastSecs, row.forLastSecs) << row.text;
    EXPECT_EQ(settings.package, row.package) << row.text;
    EXPECT_EQ(settings.detailed, row.detailed) << row.text;
  }
}

}  // namespace
}  // namespace quillet
