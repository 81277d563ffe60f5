#include <fstream>

#include "platform/store/UserDefaults.h"
#include "tests/platform/Test.h"

namespace platform::test {

namespace fs = std::filesystem;

class UserDefaultsTest : public testing::Test {
 protected:
  UserDefaultsTest() { UserDefaults::setDirectory(directory_.path()); }
  ~UserDefaultsTest() override { UserDefaults::setDirectory({}); }

  static UserDefaults* suite() { return UserDefaults::suite("group"); }

  const TemporaryDirectory directory_;
  const fs::path file_ = directory_.path() / "group.json";
  LogCapture log_;
};

TEST_F(UserDefaultsTest, GivesValuesByType) {
  writeFile(file_, R"({"text":"1","truth":false,"none":null,"list":[1],"object":{}})");
  ASSERT_NE(suite(), nullptr);
  for (const std::string key : {"text", "truth", "none", "list", "object", "missing"}) {
    EXPECT_EQ(suite()->stringForKey(key).has_value(), key == "text");
    EXPECT_EQ(suite()->boolForKey(key), key == "truth" ? std::optional(false) : std::nullopt);
    EXPECT_EQ(suite()->dictionaryForKey(key).has_value(), key == "object");
    EXPECT_EQ(suite()->integerForKey(key), 0) << key;
  }
  const auto integer = [&](const std::string& json) {
    writeFile(file_, R"({"key":)" + json + "}");
    return suite()->integerForKey("key");
  };
  expectEach<std::string, std::int64_t>(integer, {{"-1.9", -1},
                                                  {"9223372036854775808", INT64_MAX},
                                                  {"9223372036854775808.0", INT64_MAX},
                                                  {"-1e300", INT64_MIN}});
}

TEST_F(UserDefaultsTest, IsAbsentWhileTheFileCannotBeRead) {
  for (const auto& damage :
       {"echo '[{}]' >group.json", "printf '%1048577s' {} >group.json", "mkdir group.json",
        "mkfifo group.json", "ln -s /dev/zero group.json", "ln -s group.json group.json"}) {
    writeFile(file_, R"({"a":"b"})" + std::string((1 << 20) - 9, ' '));  // as large as may be
    ASSERT_NE(suite(), nullptr);
    EXPECT_EQ(suite()->stringForKey("a"), "b");
    auto& defaults = *suite();
    log_.clear();
    fs::remove(file_);
    directory_.run(damage);
    EXPECT_EQ(suite(), nullptr);
    EXPECT_EQ(suite(), nullptr);
    EXPECT_EQ(defaults.stringForKey("a"), std::nullopt);
    EXPECT_THAT(log_.records(), ElementsAre(HasSubstr(file_.string() + " cannot be used: ")));
    fs::remove(file_);
    EXPECT_NE(suite(), nullptr) << "what is not there is empty";
  }
}

TEST_F(UserDefaultsTest, ReplacesTheFileForEachValueSet) {
  writeFile(file_, "{}");
  std::ifstream reader(file_);
  auto* const defaults = suite();
  ASSERT_NE(defaults, nullptr);
  defaults->setObject({{"--userId", "u1"}, {"ttl", 5}}, "mdmConf");
  defaults->setObject("x\xFFy", "text");
  EXPECT_EQ(readFile(file_),
            "{\n  \"mdmConf\": {\n    \"--userId\": \"u1\",\n    \"ttl\": 5\n  },\n"
            "  \"text\": \"x\xEF\xBF\xBDy\"\n}\n");
  EXPECT_EQ((std::string{std::istreambuf_iterator<char>(reader), {}}), "{}") << "read whole";
  EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0600));
  EXPECT_EQ(std::distance(fs::directory_iterator(directory_.path()), fs::directory_iterator()), 1);
  EXPECT_EQ(suite(), defaults);
  EXPECT_EQ(description(defaults->dictionaryForKey("mdmConf")),
            R"(Optional(["--userId": "u1", "ttl": 5]))");
  defaults->setObject(nullptr, "mdmConf");
  defaults->setObject(nullptr, "text");
  EXPECT_EQ(readFile(file_), "{}\n");
  EXPECT_THAT(log_.records(), ElementsAre());
}

TEST_F(UserDefaultsTest, WritesNothingThatCouldNotBeReadAgain) {
  writeFile(file_, R"({"a":1})");
  JSONValue deep = 1;
  for (int i = 0; i < 64; ++i) {
    deep = JSONValue::array({deep});
  }
  suite()->setObject(deep, "deep");
  suite()->setObject(std::string(1 << 20, 'x'), "large");
  EXPECT_EQ(readFile(file_), R"({"a":1})");
  const auto tooMuch = HasSubstr(" not written: too large or too deep");
  EXPECT_THAT(log_.records(), ElementsAre(tooMuch, tooMuch));
  ASSERT_NE(suite(), nullptr);
  EXPECT_EQ(suite()->integerForKey("a"), 1);
  EXPECT_EQ(suite()->stringForKey("large")->size(), 1U << 20);
}

TEST_F(UserDefaultsTest, LeavesAFileThatItCannotReadWhole) {
  writeFile(file_, R"({"a":1,"b":1e999})");
  ASSERT_NE(suite(), nullptr);
  EXPECT_EQ(suite()->integerForKey("a"), 1);
  suite()->setObject(2, "a");
  EXPECT_EQ(suite()->integerForKey("a"), 2);
  EXPECT_EQ(readFile(file_), R"({"a":1,"b":1e999})");
  EXPECT_THAT(log_.records(), ElementsAre(HasSubstr(" would lose b: a number too large")));
  writeFile(file_, R"({"a":3})");
  suite()->setObject(4, "b");
  EXPECT_EQ(suite()->integerForKey("a"), 3);
  EXPECT_EQ(readFile(file_), "{\n  \"a\": 3,\n  \"b\": 4\n}\n");
}

TEST_F(UserDefaultsTest, IsToldOfChangesByTheLoopWhereTheKernelTellsOfThem) {
  const SharedClock clock;
  const auto value = [] { return suite()->integerForKey("a"); };
  const std::string write = R"(echo '{"a":2}' >folder/group.json)";
  // Where the suite is, what the shell does, the value before the loop has run, and after.
  const std::tuple<const char*, std::string, std::int64_t, std::int64_t> rows[] = {
      {"folder", write, 1, 2},
      {"folder", "mv folder/group.json folder/old; " + write, 1, 2},
      {"folder", "rm folder/group.json", 1, 0},
      {"folder", "mv folder old; mkdir folder; " + write, 1, 2},
      {"folder", "mv ../parent ../old", 1, 0},
      {"link", write, 2, 2},  // looked at with each call
      {"other", write, 2, 2}};
  UserDefaults::watchChanges(true);
  for (const auto& [folder, change, before, after] : rows) {
    const TemporaryDirectory place;
    place.run("mkdir -p parent/folder parent/other");
    place.run(R"(cd parent; echo '{"a":1}' >folder/group.json)");
    place.run("cd parent; ln -s folder link; ln -s ../folder/group.json other");
    UserDefaults::setDirectory(place.path() / "parent" / folder);
    EXPECT_EQ(value(), 1);
    place.run("cd parent; " + change);
    EXPECT_EQ(value(), before) << folder << ": " << change;
    runReady();
    EXPECT_EQ(value(), after) << folder << ": " << change;
  }
  UserDefaults::watchChanges(false);
}

}  // namespace platform::test
