#include <gtest/gtest.h>

#include <string>

#include "programs/quillet_demo_filter/QueryLine.h"
#include "tests/support/Wire.h"

namespace quillet {
namespace {

using test::hex;

std::string lineOf(const std::string& query) {
  std::string line;
  appendQueryLine(line, DnsToolsSocket::Message::deserialize(hex(query)).value());
  return line;
}

TEST(QueryLineTest, ShowsTypeNameAndOptions) {
  struct Row {
    std::string query;
    std::string line;
  };
  const std::string plain = "1234 0100 0001 0000 0000 0000 ";
  const std::string with =
      "1234 0100 0001 0000 0000 0001 01 61 00 0001 0001 01 30 00 0029 0000 00000000 ";
  const Row rows[] = {
      {plain + "01 61 01 62 00 0001 0001", "A a.b  no identity\n"},
      {plain + "01 61 00 001c 0001", "AAAA a  no identity\n"},
      {plain + "01 61 00 0041 0001", "HTTPS a  no identity\n"},
      {plain + "01 61 00 0010 0001", "TYPE16 a  no identity\n"},
      {plain + "00 0001 0001", "A .  no identity\n"},
      {plain + "02 1b 0a 00 0001 0001", "A \\x1B\\n  no identity\n"},
      {"1234 0100 0000 0000 0000 0000", "no question  no identity\n"},
      {with + "0005 fde9 0001 31", "A a  65001=1\n"},
      {with + "000b fde9 0003 61 0a 62 fdeb 0000", "A a  65001=a\\nb 65003=\n"},
      {with + "0000", "A a  no identity\n"},
      {with + "0005 fde9 0002 31", "A a  no identity\n"},
      {"1234 0100 0001 0000 0000 0001 01 61 00 0001 0001 00 000f 0001 00000000 0004 fde9 0000",
       "A a  no identity\n"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(lineOf(row.query), row.line) << row.query;
  }
}

}  // namespace
}  // namespace quillet
