// A command that was read is written as one compact object that reads back as the same. Any text,
// sent as a payload, comes back whole.

#include <algorithm>

#include "DnsProxyExt/relay/XpcUdpCommandParser.h"
#include "fuzz/Target.h"
#include "platform/base/Utf8.h"

namespace quillet::fuzz {

void checkRoundTrip(const XpcUdpCommand& command) {
  const auto encoded = XpcUdpCommandParser::encodeCommand(command);
  require(encoded && std::ranges::all_of(*encoded, [](auto byte) { return byte >= 0x20; }));
  require(platform::textOf(*encoded).starts_with(R"({"cmdType":")"));
  require(XpcUdpCommandParser::decodeCommand(*encoded) == command);
}

void run(platform::DataView input) {
  if (input.size() >= 65'536) {
    return;  // escaped, it may be more than a parser of JSON takes
  }
  if (const auto command = XpcUdpCommandParser::decodeCommand(input)) {
    checkRoundTrip(*command);
  }
  if (const auto text = platform::textOf(input); platform::isValidUtf8(text)) {
    checkRoundTrip({XpcUdpCommandParser::CmdType::printToLog, std::string(text)});
  }
}

}  // namespace quillet::fuzz
