#include "DnsProxyExt/relay/XpcUdpCommandParser.h"
#include "tests/support/Test.h"

namespace quillet::test {

using CmdType = XpcUdpCommandParser::CmdType;

std::optional<XpcUdpCommand> decode(std::string_view text) {
  return XpcUdpCommandParser::decodeCommand(bytesOf(text));
}

TEST(XpcUdpCommandParser, WritesExactBytesAndReadsThemBack) {
  const std::pair<XpcUdpCommand, const char*> rows[] = {
      {{CmdType::notification, "started"}, R"({"cmdType":"notification","payload":"started"})"},
      {{CmdType::command, "\b\f\n\r\t"}, R"({"cmdType":"command","payload":"\b\f\n\r\t"})"},
      {{CmdType::printToLog, "čšž €😀"}, R"({"cmdType":"printToLog","payload":"čšž €😀"})"},
      {{CmdType::printToLog, std::string("\"\\a/b\0\x1b\x1f\x7f", 9)},
       R"({"cmdType":"printToLog","payload":"\"\\a\/b\u0000\u001b\u001f)"
       "\x7f\"}"}};
  for (const auto& [command, datagram] : rows) {
    EXPECT_EQ(textOf(XpcUdpCommandParser::encodeCommand(command).value()), datagram);
    EXPECT_EQ(decode(datagram), command) << datagram;
  }
  EXPECT_EQ(XpcUdpCommandParser::encodeCommand({CmdType::printToLog, "a\xFF"}), std::nullopt);
}

TEST(XpcUdpCommandParser, ReadsMembersByNameAndRefusesWhatIsNoCommand) {
  const std::string deep = std::string(20'000, '[') + std::string(20'000, ']');
  for (const auto& text :
       {std::string(R"( {"other": [{"payload": 2}], "payload": "x/y", "cmdType": "command"} )"),
        R"({"a":1e999,"payload":"x\/y","b":)" + deep + R"(,"cmdType":"\u0063ommand"})"}) {
    EXPECT_EQ(decode(text), (XpcUdpCommand{CmdType::command, "x/y"})) << text;
  }
  const std::string none[] = {
      "&*AL line",
      R"({"cmdType":"command"})",
      R"({"payload":"x"})",
      R"({"cmdType":"Command","payload":"x"})",
      R"({"cmdType":1,"payload":"x"})",
      R"({"cmdType":"command","payload":1e999})",
      R"({"cmdtype":"command","payload":"x"})",
      R"({"cmdType":"command","payload":"x"} more)",
      "{\"cmdType\":\"command\",\"payload\":\"\xFF\"}",
      std::string(65'507, '['),
      R"({"cmdType":"command","payload":"x","deep":)" + std::string(60'000, '[')};
  for (const auto& text : none) {
    EXPECT_EQ(decode(text), std::nullopt) << text;
  }
}

}  // namespace quillet::test
