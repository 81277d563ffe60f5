// A command that was read is written as one compact object that reads back as the same. Any text,
// sent as a payload, comes back whole.

#include <string_view>

#include "DnsProxyExt/relay/XpcUdpCommandParser.h"
#include "fuzz/Require.h"
#include "platform/base/Utf8.h"

namespace {

using quillet::XpcUdpCommand;
using quillet::XpcUdpCommandParser;
using quillet::fuzz::require;

void checkRoundTrip(const XpcUdpCommand& command) {
  const auto encoded = XpcUdpCommandParser::encodeCommand(command);
  require(encoded.has_value());
  for (const auto byte : *encoded) {
    require(byte >= 0x20);
  }
  require(platform::textOf(*encoded).starts_with(R"({"cmdType":")"));
  require(XpcUdpCommandParser::decodeCommand(*encoded) == command);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size >= 65'536) {
    return 0;  // escaped, it may be more than a parser of JSON takes
  }
  const platform::DataView bytes(data, size);
  if (const auto command = XpcUdpCommandParser::decodeCommand(bytes)) {
    checkRoundTrip(*command);
  }
  const auto text = platform::textOf(bytes);
  if (platform::isValidUtf8(text)) {
    checkRoundTrip({XpcUdpCommandParser::CmdType::printToLog, std::string(text)});
  }
  return 0;
}
