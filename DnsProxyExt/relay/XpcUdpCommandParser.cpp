#include "DnsProxyExt/relay/XpcUdpCommandParser.h"

#include <algorithm>
#include <array>

#include "platform/base/Utf8.h"
#include "platform/store/JSONDocument.h"

namespace quillet {

using platform::Data;
using platform::DataView;
using CmdType = XpcUdpCommandParser::CmdType;

namespace {

constexpr char kTypeKey[] = "cmdType";
constexpr char kPayloadKey[] = "payload";

/// The wire names, in the order of the enumeration.
constexpr std::array<std::string_view, 3> kTypeNames{"printToLog", "command", "notification"};

std::string_view nameOf(CmdType type) { return kTypeNames[static_cast<std::size_t>(type)]; }

std::optional<CmdType> typeNamed(std::string_view name) {
  const auto* const found = std::find(kTypeNames.begin(), kTypeNames.end(), name);
  if (found == kTypeNames.end()) {
    return std::nullopt;
  }
  return static_cast<CmdType>(found - kTypeNames.begin());
}

void append(Data& out, std::string_view text) { out.insert(out.end(), text.begin(), text.end()); }

/// What stands for `c` within a JSON string after a backslash, or 0 (RFC 8259 section 7). "/" is
/// among them although it need not be: the peers' own encoder writes it so, and the bytes are to be
/// the same.
char escapeLetter(char c) {
  switch (c) {
    case '"':
    case '\\':
    case '/':
      return c;
    case '\b':
      return 'b';
    case '\f':
      return 'f';
    case '\n':
      return 'n';
    case '\r':
      return 'r';
    case '\t':
      return 't';
    default:
      return '\0';
  }
}

void appendEscaped(Data& out, char c) {
  const auto byte = static_cast<unsigned char>(c);
  if (const char letter = escapeLetter(c)) {
    append(out, {"\\", 1});
    append(out, {&letter, 1});
  } else if (byte < 0x20) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    append(out, "\\u00");
    append(out, kDigits.substr(byte / 16, 1));
    append(out, kDigits.substr(byte % 16, 1));
  } else {
    out.push_back(byte);
  }
}

const std::string* textMember(const platform::JSONValue& object, const char* key) {
  const auto member = object.find(key);
  return member == object.end() ? nullptr : member->get_ptr<const std::string*>();
}

}  // namespace

std::optional<Data> XpcUdpCommandParser::encodeCommand(const XpcUdpCommand& cmd) {
  return encodeCommand(cmd.cmdType, cmd.payload);
}

std::optional<Data> XpcUdpCommandParser::encodeCommand(CmdType cmdType, std::string_view payload) {
  if (!platform::isValidUtf8(payload)) {
    return std::nullopt;
  }
  Data out;
  out.reserve(payload.size() + payload.size() / 8 + 64);
  append(out, R"({"cmdType":")");
  append(out, nameOf(cmdType));
  append(out, R"(","payload":")");
  for (const char c : payload) {
    appendEscaped(out, c);
  }
  append(out, R"("})");
  return out;
}

std::optional<XpcUdpCommand> XpcUdpCommandParser::decodeCommand(DataView data) {
  const auto json = platform::parseJSON(platform::textOf(data));
  if (!json || !json->value.is_object()) {
    return std::nullopt;
  }
  const auto* name = textMember(json->value, kTypeKey);
  const auto* payload = textMember(json->value, kPayloadKey);
  const auto type = name != nullptr ? typeNamed(*name) : std::nullopt;
  if (!type || payload == nullptr) {
    return std::nullopt;
  }
  return XpcUdpCommand{*type, *payload};
}

}  // namespace quillet
