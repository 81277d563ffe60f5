#include "platform/store/TimeZone.h"
#include "tests/platform/Test.h"

namespace platform::test {

class TimeZoneTest : public testing::Test {
 protected:
  const TemporaryDirectory directory_;
  const TimeZonePaths paths_{directory_.path() / "localtime", directory_.path() / "timezone"};
};

TEST_F(TimeZoneTest, TakesTheFirstSourceThatNamesAZone) {
  const std::string zone = "/usr/share/zoneinfo/Europe/Ljubljana";
  const std::string tooLong(65, 'A');
  const std::tuple<const char*, std::string, std::string, std::string> rows[] = {
      {"Asia/Tokyo", zone, "Etc/UTC\n", "Asia/Tokyo"},
      {":/usr/share/zoneinfo/America/Port-au-Prince", zone, "", "America/Port-au-Prince"},
      {"", zone, "Europe/Paris\n", "UTC"},  // as the C library takes it
      {"CET-1CEST,M3.5.0,M10.5.0/3", zone, "", "Europe/Ljubljana"},
      {"Europe/\nParis", zone, "", "Europe/Ljubljana"},
      {tooLong.c_str(), zone, "", "Europe/Ljubljana"},
      {nullptr, "../usr/share/zoneinfo/Etc/GMT+5", "Etc/UTC\n", "Etc/GMT+5"},
      {nullptr, "/srv/myzone", "Europe/Paris # a remark\nx\n", "Europe/Paris"},
      {nullptr, "/nowhere", "\nEurope/Paris\n", "UTC"},
      {nullptr, "/nowhere", std::string(5000, 'A'), "UTC"}};
  for (const auto& [variable, target, text, expected] : rows) {
    const EnvironmentVariable tz("TZ", variable);
    directory_.run("ln -sf " + target + " localtime");
    writeFile(paths_.timezone, text);
    EXPECT_EQ(SystemTimeZone(paths_).identifier(), expected) << target << ' ' << text;
  }
  const EnvironmentVariable tz("TZ", nullptr);
  directory_.run("rm timezone; mkfifo timezone");
  EXPECT_EQ(SystemTimeZone(paths_).identifier(), "UTC") << "nobody waits for a writer";
}

TEST_F(TimeZoneTest, LooksAgainAfterASecond) {
  const EnvironmentVariable tz("TZ", nullptr);
  SharedClock clock;
  SystemTimeZone zone(paths_);
  EXPECT_EQ(zone.identifier(), "UTC");
  writeFile(paths_.timezone, "Asia/Tokyo");
  clock.advanceSeconds(0.999);
  EXPECT_EQ(zone.identifier(), "UTC");
  clock.advanceSeconds(0.001);
  EXPECT_EQ(zone.identifier(), "Asia/Tokyo");
}

}  // namespace platform::test
