#include "control_client/WatchLine.h"
#include "tests/control_client/Locale.h"
#include "tests/support/Test.h"

namespace quilletctl::test {

using namespace quillet::test;

QueryEvent query(const std::string& name, const std::string& application) {
  auto event = QueryEvent::from(
      R"({"type": "AAAA", "server": "127.0.0.2:81", "rule": 5, "ms": 12.34})"_json);
  event.name = name;
  event.application = application;
  return event;
}

TEST(WatchLineTest, CutsNameAndApplicationOnlyWhereBothHaveNoRoom) {
  const Locale locale;
  const std::string head = "  12.3 none     5 127.0.0.2:81     AAAA   ";
  const std::tuple<std::size_t, const char*, const char*, const char*> rows[] = {
      {80, "www.example.com", "firefox", "www.example.com                firefox"},
      {80, "名前.example.com", "firefox", "名前.example.com               firefox"},
      {80, "a.long.name.that.wants.it.all.example", "firefox",
       "a.long.name.that.wants.it.all… firefox"},
      {80, "www.example.com", "org.example.an-application",
       "www.example.com org.example.an-applic…"},
      {80, "a.long.name.that.wants.it.all.example", "org.example.an-application",
       "a.long.name.that.want… org.example.an…"},
      {54, "www.example.com", "firefox", "www.ex… fir…"}};
  for (const auto& [width, name, application, end] : rows) {
    EXPECT_EQ(watchLine(query(name, application), width).plain(), head + end);
  }
  EXPECT_EQ(watchLine(query("name", "firefox"), 10).plain(), "  12.3 no…");
}

}  // namespace quilletctl::test
