#include <string>
#include <tuple>

#include "demo/DemoAnswer.h"
#include "demo/DemoPolicy.h"
#include "tests/support/Test.h"

namespace quillet::test {

using DnsToolsSocket::Message;

std::optional<Data> bytesOf(const std::optional<Message>& answer) {
  return answer ? std::optional(answer->serialize().value()) : std::nullopt;
}

TEST(DemoAnswerTest, AnswersByteForByte) {
  const std::tuple<const char*, std::string, std::string> rows[] = {
      {"flags that are not ours, the identity's OPT record, the question's own letters",
       "1234 0030 0001 0000 0000 0001 01 41 00 0001 0001"
       "01 30 00 00 29 00 00 00 00 00 00 00 05 fd ef 00 01 31",
       "1234 8080 0001 0001 0000 0000 01 41 00 0001 0001"
       "c0 0c 00 01 00 01 00 00 00 3c 00 04 c6 13 ec 8c"},
      {"HTTPS", "0000 0100 0001 0000 0000 0000 01 61 00 0041 0001",
       "0000 8180 0001 0001 0000 0000 01 61 00 0041 0001"
       "c0 0c 00 41 00 01 00 00 00 3c 00 0a 00 01 00 00 01 00 03 02 68 32"},
      {"another class", "1234 0100 0001 0000 0000 0000 01 61 00 0001 0003",
       "1234 8185 0001 0000 0000 0000 01 61 00 0001 0003"},
      {"another operation", "1234 2100 0001 0000 0000 0000 01 61 00 0001 0001",
       "1234 a184 0001 0000 0000 0000 01 61 00 0001 0001"},
      {"no question", "1234 0100 0000 0000 0000 0000", "1234 8181 0000 0000 0000 0000"}};
  for (const auto& [what, query, answer] : rows) {
    EXPECT_EQ(bytesOf(answerTo(Message::deserialize(hex(query)).value())), hex(answer)) << what;
  }
}

TEST(DemoAnswerTest, AnswersDatagramsThatCannotBeDecoded) {
  EXPECT_EQ(bytesOf(answerToUndecodable(hex("ff34 7fff ffff ffff ffff ffff"))),
            hex("ff34 8081 0000 0000 0000 0000"));
  for (const char* query : {"1234 8180 0001 0000 0000 0000", "1234 0100 0001 0000 0000 00", ""}) {
    EXPECT_EQ(answerToUndecodable(hex(query)), std::nullopt);
  }
}

TEST(DemoPolicyTest, ReadsTheOrganizationOfARequest) {
  const std::pair<std::string, std::optional<std::string_view>> rows[] = {
      {R"(a"}b"})", R"(a"}b)"}, {R"("})", ""}, {R"(})", std::nullopt}, {R"(org42")", std::nullopt}};
  for (const auto& [rest, organization] : rows) {
    const auto request = R"({"function": "localDNSMap","companyId": ")" + rest;
    EXPECT_EQ(organizationOf(bytesOf(request)), organization) << rest;
    EXPECT_EQ(organizationOf(bytesOf("x" + request)), std::nullopt);
  }
}

}  // namespace quillet::test
