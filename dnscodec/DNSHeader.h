#pragma once

#include <cstdint>

namespace quillet {

/// The fixed first part of a message (RFC 1035 section 4.1.1; AD and CD: RFC 4035 section 3). The
/// reserved Z bit has no place here: it is dropped on reading and written as 0.
struct DNSHeader {
  std::uint16_t id = 0;
  /// True when QR is clear.
  bool isQuery = true;
  /// Four bits.
  std::uint16_t opCode = 0;
  bool authoritativeAnswer = false;
  bool truncated = false;
  bool recursionDesired = false;
  bool recursionAvailable = false;
  bool authenticatedData = false;
  bool checkingDisabled = false;
  /// Four bits.
  std::uint8_t responseCode = 0;
  std::uint16_t questionCount = 0;
  std::uint16_t answerRecordCount = 0;
  std::uint16_t authorityRecordCount = 0;
  std::uint16_t additionalRecordCount = 0;

  bool operator==(const DNSHeader&) const = default;
};

}  // namespace quillet
