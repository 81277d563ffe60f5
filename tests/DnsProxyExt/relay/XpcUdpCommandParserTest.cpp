#include <gtest/gtest.h>

#include "DnsProxyExt/relay/XpcUdpCommandParser.h"

namespace quillet {
namespace {

using platform::bytesOf;
using platform::textOf;
using CmdType = XpcUdpCommandParser::CmdType;

std::optional<XpcUdpCommand> decode(std::string_view text) {
  return XpcUdpCommandParser::decodeCommand(bytesOf(text));
}

TEST(XpcUdpCommandParser, WritesExactBytesAndReadsThemBack) {
  const struct {
    CmdType type;
    std::string payload;
    std::string datagram;
  } rows[] = {
      {CmdType::notification, "started", R"({"cmdType":"notification","payload":"started"})"},
      {CmdType::command, "bypassAllOn", R"({"cmdType":"command","payload":"bypassAllOn"})"},
      {CmdType::printToLog, "", R"({"cmdType":"printToLog","payload":""})"},
      {CmdType::printToLog, R"("\a/b)", R"({"cmdType":"printToLog","payload":"\"\\a\/b"})"},
      {CmdType::printToLog, "\b\f\n\r\t", R"({"cmdType":"printToLog","payload":"\b\f\n\r\t"})"},
      {CmdType::printToLog, std::string("\0\x1b\x1f\x7f", 4),
       "{\"cmdType\":\"printToLog\",\"payload\":\"\\u0000\\u001b\\u001f\x7f\"}"},
      {CmdType::printToLog, "čšž €😀", R"({"cmdType":"printToLog","payload":"čšž €😀"})"},
  };
  for (const auto& row : rows) {
    const XpcUdpCommand command{row.type, row.payload};
    const auto encoded = XpcUdpCommandParser::encodeCommand(command);
    ASSERT_TRUE(encoded) << row.datagram;
    EXPECT_EQ(textOf(*encoded), row.datagram);
    EXPECT_EQ(decode(row.datagram), command) << row.datagram;
  }
  EXPECT_EQ(XpcUdpCommandParser::encodeCommand({CmdType::printToLog, "a\xFF"}), std::nullopt);
}

TEST(XpcUdpCommandParser, ReadsMembersByName) {
  const XpcUdpCommand expected{CmdType::command, "x/y"};
  EXPECT_EQ(decode(R"( {"other": [1, {"payload": 2}], "payload": "x/y", "cmdType": "command"} )"),
            expected);
  EXPECT_EQ(decode(R"({"payload":"x\/y","cmdType":"\u0063ommand"})"), expected);
  EXPECT_EQ(decode(R"({"a":1e999,"payload":"x\/y","b":)" + std::string(20'000, '[') +
                   std::string(20'000, ']') + R"(,"cmdType":"command"})"),
            expected);
}

TEST(XpcUdpCommandParser, RefusesWhatIsNoCommand) {
  const std::string rows[] = {
      "&*AL line",
      R"({"cmdType":"command"})",
      R"({"payload":"x"})",
      R"({"cmdType":"Command","payload":"x"})",
      R"({"cmdType":1,"payload":"x"})",
      R"({"cmdType":"command","payload":1})",
      R"({"cmdType":"command","payload":1e999})",
      R"({"cmdtype":"command","payload":"x"})",
      R"({"cmdType":"command","payload":"x"} more)",
      "{\"cmdType\":\"command\",\"payload\":\"\xFF\"}",
      std::string(65'507, '['),
      R"({"cmdType":"command","payload":"x","deep":)" + std::string(60'000, '['),
  };
  for (const auto& text : rows) {
    EXPECT_EQ(decode(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace quillet
