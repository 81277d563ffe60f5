#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/base/Data.h"

namespace quillet {

struct XpcUdpCommand;

/// The command datagrams of the local channel: one JSON object each, as provider and relay service
/// write and read them. All operations work on their arguments only and may run on any thread.
class XpcUdpCommandParser {
 public:
  enum class CmdType { printToLog, command, notification };

  /// The datagram of a command: `{"cmdType":"command","payload":"bypassAllOn"}`, compact, the
  /// members in this order. Absent when the payload is no UTF-8.
  static std::optional<platform::Data> encodeCommand(const XpcUdpCommand& cmd);
  static std::optional<platform::Data> encodeCommand(CmdType cmdType, std::string_view payload);

  /// The command in one datagram, its members in any order, others ignored. Absent for what is no
  /// command: no JSON object, a member missing or no text, an unknown type. The caller logs one
  /// line and drops the datagram.
  static std::optional<XpcUdpCommand> decodeCommand(platform::DataView data);
};

struct XpcUdpCommand {
  XpcUdpCommandParser::CmdType cmdType;
  std::string payload;

  bool operator==(const XpcUdpCommand&) const = default;
};

}  // namespace quillet
