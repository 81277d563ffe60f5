#include "control_client/TopModel.h"
#include "tests/support/Test.h"

namespace quilletctl::test {

using namespace quillet::test;

using testing::Pair;

class TopModelTest : public testing::Test {
 protected:
  TopModelTest() { platform::Clock::setShared(&clock_); }
  ~TopModelTest() override { platform::Clock::setShared(nullptr); }

  static QueryEvent query(const platform::JSONValue& rcode, double milliseconds = 0) {
    return QueryEvent::from({{"rcode", rcode}, {"ms", milliseconds}});
  }
  /// The seconds of which there is something, the last one first.
  [[nodiscard]] std::vector<std::pair<std::size_t, std::uint64_t>> busySeconds() const {
    const auto seconds = model_.perSecond();
    std::vector<std::pair<std::size_t, std::uint64_t>> busy;
    for (std::size_t ago = 1; ago <= seconds.size(); ++ago) {
      if (const auto count = seconds[seconds.size() - ago]; count > 0) {
        busy.emplace_back(ago, count);
      }
    }
    return busy;
  }

  platform::ManualClock clock_;
  TopModel model_;
};

TEST_F(TopModelTest, CountsTheQueriesOfEachWholeSecondOfTheLastMinute) {
  model_.add(query("NOERROR"));
  model_.addLost(3);
  EXPECT_THAT(busySeconds(), ElementsAre()) << "this second is not over";
  clock_.advanceSeconds(2);
  model_.add(query("NOERROR"));
  clock_.advanceSeconds(1.5);
  EXPECT_THAT(busySeconds(), ElementsAre(Pair(1, 1), Pair(3, 4)));
  clock_.advanceSeconds(57);
  EXPECT_THAT(busySeconds(), ElementsAre(Pair(58, 1), Pair(60, 4)));
  clock_.advanceSeconds(1);
  model_.add(query("NOERROR"));  // takes the place of the first
  EXPECT_THAT(busySeconds(), ElementsAre(Pair(59, 1)));
  clock_.advanceSeconds(1e6);
  EXPECT_THAT(busySeconds(), ElementsAre());
  EXPECT_EQ(model_.perSecond().size(), TopModel::kSeconds);
}

TEST_F(TopModelTest, CountsAnswerTimesAndFaults) {
  for (const double time : {0.0, 0.99, 1.0, 19.9, 20.0, 499.9, 500.0, 1e300}) {
    model_.add(query("NXDOMAIN", time));
  }
  model_.add(query("SERVFAIL", 1));
  model_.add(query("REFUSED", 1));
  model_.add(query(nullptr, 1));
  model_.addLost(7);
  EXPECT_THAT(model_.byTime(), ElementsAre(2, 3, 1, 1, 1, 2)) << "none without an answer";
  const auto& faults = model_.faults();
  EXPECT_THAT((std::array{faults.unanswered, faults.serverFailure, faults.refused, faults.lost}),
              ElementsAre(1, 1, 1, 7));
  EXPECT_EQ(model_.queries(), 11);
}

TEST_F(TopModelTest, CountsRulesApplicationsAndNamesOfWhateverTheProxySends) {
  const auto add = [this](const char* params) {
    model_.add(QueryEvent::from(platform::JSONValue::parse(params)));
  };
  add(R"({"name":"a.example","app":"x y","rule":5,"rcode":"NOERROR","ms":1})");
  add(R"({"name":"a.example","app":"x\u001b[m","rule":0,"rcode":null,"ms":1})");
  add(R"({"name":null,"app":7,"rule":6,"rcode":"NOERROR","ms":-1})");
  add(R"({"rule":-1,"ms":"1"})");
  add("[]");
  EXPECT_EQ(model_.ofRule(5), 1);
  EXPECT_EQ(model_.ofRule(0), 1);
  EXPECT_THAT(model_.names().first(9), ElementsAre(Pair(3, "-"), Pair(2, "a.example")));
  EXPECT_THAT(model_.applications().first(9),
              ElementsAre(Pair(3, "-"), Pair(1, "x y"), Pair(1, "x\\x1B[m")));
}

}  // namespace quilletctl::test
