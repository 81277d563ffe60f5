#include <gtest/gtest.h>

#include "control_client/WatchLine.h"
#include "tests/control_client/Locale.h"

namespace quilletctl::test {
namespace {

QueryEvent query(std::string name, std::string application) {
  QueryEvent event;
  event.name = std::move(name);
  event.type = "AAAA";
  event.application = std::move(application);
  event.server = "127.0.0.2:81";
  event.rule = 5;
  event.milliseconds = 12.34;
  return event;
}

TEST(WatchLineTest, CutsNameAndApplicationOnlyWhereBothHaveNoRoom) {
  const Locale locale;
  const std::string head = "  12.3 none     5 127.0.0.2:81     AAAA   ";
  const struct {
    std::size_t width;
    std::string name, application, end;
  } rows[] = {
      {80, "www.example.com", "firefox", "www.example.com                firefox"},
      {80, "名前.example.com", "firefox", "名前.example.com               firefox"},
      {80, "a.long.name.that.wants.it.all.example", "firefox",
       "a.long.name.that.wants.it.all… firefox"},
      {80, "www.example.com", "org.example.an-application",
       "www.example.com org.example.an-applic…"},
      {80, "a.long.name.that.wants.it.all.example", "org.example.an-application",
       "a.long.name.that.want… org.example.an…"},
      {54, "www.example.com", "firefox", "www.ex… fir…"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(watchLine(query(row.name, row.application), row.width).plain(), head + row.end);
  }
  EXPECT_EQ(watchLine(query("name", "firefox"), 10).plain(), "  12.3 no…");
}

}  // namespace
}  // namespace quilletctl::test
