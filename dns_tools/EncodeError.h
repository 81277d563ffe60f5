#pragma once

#include <cstdint>
#include <string>

#include "platform/base/Description.h"

namespace DnsToolsSocket {

/// Which limit of the wire format a message exceeds. A message beyond a limit is refused as a
/// whole.
enum class EncodeError : std::uint8_t {
  /// A section holds more than 65535 entries.
  tooManyEntries,
  /// A label is longer than 255 octets.
  labelTooLong,
  /// An attribute of a text record, with its "=", is longer than 255 octets.
  attributeTooLong,
  /// A record's RDATA is longer than 65535 octets.
  dataTooLong,
  /// A message of 65536 octets or more does not fit a TCP frame.
  messageTooLong,
};

}  // namespace DnsToolsSocket

/// Printed as the case's name.
template <>
struct platform::Describer<DnsToolsSocket::EncodeError> {
  static void describe(std::string& out, DnsToolsSocket::EncodeError error);
  static void debugDescribe(std::string& out, DnsToolsSocket::EncodeError error) {
    describe(out, error);
  }
};
