#pragma once

#include <cstdint>
#include <string>

#include "platform/base/Description.h"

namespace DnsToolsSocket {

/// Why bytes are no DNS message; the first failure met ends decoding.
enum class DecodeError : std::uint8_t {
  /// Fewer than the 12 octets of a header, or a TCP frame that is cut short.
  invalidMessageSize,
  /// A label or character-string runs past the end, or the names of the message exceed their
  /// budget.
  invalidLabelSize,
  /// A compression pointer does not point before the start of the name that it stands in.
  invalidLabelOffset,
  /// A label or character-string is not UTF-8.
  unicodeDecodingError,
  /// The message ends within an integer.
  invalidIntegerSize,
  /// The RDATA of an address record has the wrong length.
  invalidIPAddress,
  /// RDLENGTH runs past the end, or is not the length of what RDATA holds.
  invalidDataSize,
  /// The message ends before a question's type and class.
  invalidQuestion,
};

}  // namespace DnsToolsSocket

/// Printed as the case's name.
template <>
struct platform::Describer<DnsToolsSocket::DecodeError> {
  static void describe(std::string& out, DnsToolsSocket::DecodeError error);
  static void debugDescribe(std::string& out, DnsToolsSocket::DecodeError error) {
    describe(out, error);
  }
};
