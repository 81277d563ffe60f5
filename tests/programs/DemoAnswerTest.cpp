#include <gtest/gtest.h>

#include <string>

#include "programs/quillet_demo_filter/DemoAnswer.h"
#include "tests/support/Wire.h"

namespace quillet {
namespace {

using DnsToolsSocket::Message;
using platform::Data;
using test::hex;

constexpr char kQuestion[] = "01 61 00 00 01 00 01";  // a, A, IN

std::optional<Data> answerBytes(const std::string& query) {
  const auto answer = answerTo(Message::deserialize(hex(query)).value());
  return answer ? std::optional(answer->serialize().value()) : std::nullopt;
}

TEST(DemoAnswerTest, AnswersByteForByte) {
  struct Row {
    std::string what;
    std::string query;
    std::string answer;
  };
  const std::string address = "c0 0c 00 01 00 01 00 00 00 3c 00 04 c6 13 ec 8c";
  const Row rows[] = {
      {"A", "1234 0100 0001 0000 0000 0000 01 61 00 0001 0001",
       "1234 8180 0001 0001 0000 0000 01 61 00 0001 0001" + address},
      {"the question in its own letters", "1234 0100 0001 0000 0000 0000 01 41 00 0001 0001",
       "1234 8180 0001 0001 0000 0000 01 41 00 0001 0001" + address},
      {"no recursion desired, flags that are not ours",
       "1234 0030 0001 0000 0000 0000 01 61 00 0001 0001",
       "1234 8080 0001 0001 0000 0000 01 61 00 0001 0001" + address},
      {"AAAA", "ffff 0100 0001 0000 0000 0000 01 61 00 001c 0001",
       "ffff 8180 0001 0001 0000 0000 01 61 00 001c 0001"
       "c0 0c 00 1c 00 01 00 00 00 3c 00 10 20 01 0d b8 00 00 00 00 af 63 dc 4c 86 01 ec 8c"},
      {"HTTPS", "0000 0100 0001 0000 0000 0000 01 61 00 0041 0001",
       "0000 8180 0001 0001 0000 0000 01 61 00 0041 0001"
       "c0 0c 00 41 00 01 00 00 00 3c 00 0a 00 01 00 00 01 00 03 02 68 32"},
      {"another type", "1234 0100 0001 0000 0000 0000 01 61 00 000f 0001",
       "1234 8185 0001 0000 0000 0000 01 61 00 000f 0001"},
      {"another class", "1234 0100 0001 0000 0000 0000 01 61 00 0001 0003",
       "1234 8185 0001 0000 0000 0000 01 61 00 0001 0003"},
      {"another operation", "1234 2100 0001 0000 0000 0000 01 61 00 0001 0001",
       "1234 a184 0001 0000 0000 0000 01 61 00 0001 0001"},
      {"no question", "1234 0100 0000 0000 0000 0000", "1234 8181 0000 0000 0000 0000"},
      {"the identity's OPT record",
       "1234 0100 0001 0000 0000 0001 01 61 00 0001 0001"
       "01 30 00 00 29 00 00 00 00 00 00 00 05 fd ef 00 01 31",
       "1234 8180 0001 0001 0000 0000 01 61 00 0001 0001" + address},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(answerBytes(row.query), hex(row.answer)) << row.what;
  }
}

TEST(DemoAnswerTest, TwoQuestionsAreAnError) {
  const auto query = Message::deserialize(
      hex("1234 0100 0002 0000 0000 0000" + std::string(kQuestion) + kQuestion));
  const auto answer = answerTo(query.value());
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(answer->returnCode, 1);
  EXPECT_TRUE(answer->answers.empty());
}

TEST(DemoAnswerTest, AnswersAreNotAnswered) {
  EXPECT_EQ(answerBytes("1234 8180 0001 0000 0000 0000" + std::string(kQuestion)), std::nullopt);
}

TEST(DemoAnswerTest, UndecodableDatagrams) {
  const auto bytes = [](const std::string& datagram) {
    const auto answer = answerToUndecodable(hex(datagram));
    return answer ? std::optional(answer->serialize().value()) : std::nullopt;
  };
  EXPECT_EQ(bytes("1234 0100 0001 0000 0000 0000"), hex("1234 8081 0000 0000 0000 0000"));
  EXPECT_EQ(bytes("ffff 7fff ffff ffff ffff ffff ff"), hex("ffff 8081 0000 0000 0000 0000"));
  EXPECT_EQ(bytes("1234 8180 0001 0000 0000 0000"), std::nullopt);
  EXPECT_EQ(bytes("1234 0100 0001 0000 0000 00"), std::nullopt);
  EXPECT_EQ(bytes(""), std::nullopt);
}

}  // namespace
}  // namespace quillet
