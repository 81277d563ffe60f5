#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "dnscodec/WireWriter.h"
#include "platform/base/Data.h"

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

/// Where a header has its flags: octet 2 from QR to RD, octet 3 from RA on.
struct HeaderBits {
  static constexpr std::size_t kHeaderSize = 12;

  static constexpr std::uint8_t kResponse = 0x80;
  static constexpr int kOpCodeShift = 3;
  static constexpr std::uint8_t kAuthoritativeAnswer = 0x04;
  static constexpr std::uint8_t kTruncated = 0x02;
  static constexpr std::uint8_t kRecursionDesired = 0x01;

  static constexpr std::uint8_t kRecursionAvailable = 0x80;
  static constexpr std::uint8_t kAuthenticatedData = 0x20;
  static constexpr std::uint8_t kCheckingDisabled = 0x10;

  /// Operation code and response code have four bits each.
  static constexpr std::uint8_t kCodeMask = 0x0F;
};

/// Reads one header. Made fresh for each.
class DNSHeaderDecoder {
 public:
  /// Reads the 12 octets from `offset` on and moves it past them. Fewer leave `header` unset.
  void decodeHeaderInBuffer(platform::DataView buffer, std::uint32_t& offset);

  std::optional<DNSHeader> header;
};

/// Writes headers.
class DNSHeaderEncoder {
 public:
  /// The 12 octets of a header, with the counts that it holds.
  static platform::Data encode(const DNSHeader& header);
  /// The same, after what the writer holds.
  static void encodeTo(WireWriter& writer, const DNSHeader& header);
};

}  // namespace quillet
