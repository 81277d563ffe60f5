#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DnsProxyExt/XpcUdpCommandParser.h"

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
      {CmdType::printToLog, R"(say "no"\)", R"({"cmdType":"printToLog","payload":"say \"no\"\\"})"},
      {CmdType::printToLog, "a/b", R"({"cmdType":"printToLog","payload":"a\/b"})"},
      {CmdType::printToLog, "\b\f\n\r\t", R"({"cmdType":"printToLog","payload":"\b\f\n\r\t"})"},
      {CmdType::printToLog, std::string("\0\x01\x1b\x1f\x7f", 5),
       "{\"cmdType\":\"printToLog\",\"payload\":\"\\u0000\\u0001\\u001b\\u001f\x7f\"}"},
      {CmdType::printToLog, "čšž €😀", R"({"cmdType":"printToLog","payload":"čšž €😀"})"},
  };
  for (const auto& row : rows) {
    const XpcUdpCommand command{row.type, row.payload};
    const auto encoded = XpcUdpCommandParser::encodeCommand(command);
    ASSERT_TRUE(encoded) << row.datagram;
    EXPECT_EQ(textOf(*encoded), row.datagram);
    EXPECT_EQ(decode(row.datagram), command) << row.datagram;
  }
}

TEST(XpcUdpCommandParser, WritesNoPayloadThatIsNoText) {
  EXPECT_EQ(XpcUdpCommandParser::encodeCommand({CmdType::printToLog, "a\xFF"}), std::nullopt);
}

TEST(XpcUdpCommandParser, ReadsMembersByName) {
  const XpcUdpCommand expected{CmdType::command, "x/y"};
  for (const char* text : {
           R"({"payload":"x/y","cmdType":"command"})",
           R"({"payload":"x\/y","cmdType":"\u0063ommand"})",
           R"( { "other" : [1, {"payload": 2}], "cmdType" : "command", "payload" : "x/y" } )",
       }) {
    EXPECT_EQ(decode(text), expected) << text;
  }
}

TEST(XpcUdpCommandParser, RefusesWhatIsNoCommand) {
  for (const char* text : {
           "",
           "no JSON",
           "&*AL line",
           "null",
           R"("command")",
           R"(["command","x"])",
           R"({})",
           R"({"cmdType":"command"})",
           R"({"payload":"x"})",
           R"({"cmdType":"Command","payload":"x"})",
           R"({"cmdType":"","payload":"x"})",
           R"({"cmdType":"commands","payload":"x"})",
           R"({"cmdType":1,"payload":"x"})",
           R"({"cmdType":null,"payload":"x"})",
           R"({"cmdType":"command","payload":1})",
           R"({"cmdType":"command","payload":null})",
           R"({"cmdType":"command","payload":["x"]})",
           R"({"cmdtype":"command","payload":"x"})",
           R"({"cmdType":"command","payload":"x"} more)",
           "{\"cmdType\":\"command\",\"payload\":\"\xFF\"}",
       }) {
    EXPECT_EQ(decode(text), std::nullopt) << text;
  }
}

TEST(XpcUdpCommandParser, RefusesACommandCutAnywhere) {
  const std::string whole = R"({"cmdType":"command","payload":"bypassAllOn"})";
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_EQ(decode(whole.substr(0, length)), std::nullopt) << length;
  }
}

TEST(XpcUdpCommandParser, BearsTheLargestDatagramAndTheDeepest) {
  const std::string payload(65'400, 'x');
  const auto encoded = XpcUdpCommandParser::encodeCommand({CmdType::printToLog, payload});
  EXPECT_EQ(XpcUdpCommandParser::decodeCommand(encoded.value())->payload, payload);
  EXPECT_EQ(decode(std::string(65'507, '[')), std::nullopt);
  EXPECT_EQ(decode(R"({"cmdType":"command","payload":"x","deep":)" + std::string(60'000, '[')),
            std::nullopt);
}

}  // namespace
}  // namespace quillet
