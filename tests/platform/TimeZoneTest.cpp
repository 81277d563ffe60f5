#include <gtest/gtest.h>

#include <string>

#include "platform/foundation/Clock.h"
#include "platform/foundation/TimeZone.h"
#include "tests/platform/EnvironmentVariable.h"
#include "tests/platform/TemporaryDirectory.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using test::EnvironmentVariable;

class TimeZoneTest : public testing::Test {
 protected:
  // Without /etc/localtime's counterpart for an empty target, without the file for an empty text.
  std::string identifierFor(const char* variable, const std::string& target,
                            const std::string& text) {
    const EnvironmentVariable tz("TZ", variable);
    fs::remove(paths_.localtime);
    fs::remove(paths_.timezone);
    if (!target.empty()) {
      fs::create_symlink(target, paths_.localtime);
    }
    if (!text.empty()) {
      test::writeFile(paths_.timezone, text);
    }
    return SystemTimeZone(paths_).identifier();
  }

  const test::TemporaryDirectory directory_;
  const TimeZonePaths paths_{directory_.path() / "localtime", directory_.path() / "timezone"};
};

TEST_F(TimeZoneTest, theFirstSourceThatNamesAZoneDecides) {
  const std::string zone = "/usr/share/zoneinfo/Europe/Ljubljana";
  const std::string tooLong(65, 'A');
  const struct {
    const char* variable;
    std::string target;
    std::string text;
    std::string expected;
  } rows[] = {
      {"Asia/Tokyo", zone, "Etc/UTC\n", "Asia/Tokyo"},
      {":/usr/share/zoneinfo/America/Port-au-Prince", zone, "", "America/Port-au-Prince"},
      {"", zone, "Europe/Paris\n", "UTC"},  // as the C library takes it
      {"CET-1CEST,M3.5.0,M10.5.0/3", zone, "", "Europe/Ljubljana"},
      {"Europe/\nParis", zone, "", "Europe/Ljubljana"},
      {tooLong.c_str(), zone, "", "Europe/Ljubljana"},
      {nullptr, zone, "Etc/UTC\n", "Europe/Ljubljana"},
      {nullptr, "../usr/share/zoneinfo/America/Argentina/Ushuaia", "", "America/Argentina/Ushuaia"},
      {nullptr, "/srv/myzone", "Europe/Paris\n", "Europe/Paris"},
      {nullptr, "", "Europe/Paris # a remark\nx\n", "Europe/Paris"},
      {nullptr, "", "\nEurope/Paris\n", "UTC"},
      {nullptr, "", std::string(5000, 'A'), "UTC"},
      {nullptr, "", "", "UTC"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(identifierFor(row.variable, row.target, row.text), row.expected)
        << testing::PrintToString(row.variable) << ' ' << row.target << ' ' << row.text;
  }
}

TEST_F(TimeZoneTest, looksAgainAfterASecond) {
  const EnvironmentVariable tz("TZ", nullptr);
  ManualClock clock;
  Clock::setShared(&clock);
  test::writeFile(paths_.timezone, "Europe/Paris");
  SystemTimeZone zone(paths_);
  EXPECT_EQ(zone.identifier(), "Europe/Paris");
  test::writeFile(paths_.timezone, "Asia/Tokyo");
  clock.advanceSeconds(0.999);
  EXPECT_EQ(zone.identifier(), "Europe/Paris");
  clock.advanceSeconds(0.001);
  EXPECT_EQ(zone.identifier(), "Asia/Tokyo");
  Clock::setShared(nullptr);
}

}  // namespace
}  // namespace platform
