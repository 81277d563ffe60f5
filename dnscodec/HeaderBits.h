#pragma once

#include <cstddef>
#include <cstdint>

namespace quillet {

/// The flags of a message header (RFC 1035 section 4.1.1, RFC 4035 section 3), in its octets 2
/// and 3.
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

}  // namespace quillet
