#pragma once

#include <cstddef>
#include <optional>

#include "dnscodec/DNSResourceRecord.h"
#include "platform/base/Data.h"

namespace quillet {

/// What UDP over IPv4 carries, octets.
inline constexpr std::size_t kMaxDatagramSize = 65'507;

/// A query of the header and the question octets of `datagram` as they came, and `record` as its
/// one additional record. Names are passed over from length to length, so it does not matter what
/// they hold; the other sections are left out. A pointer stays right because it may only lead to
/// earlier octets of the question section (RFC 1035 section 4.1.4), which stay where they were.
///
/// Absent when the questions that the header counts are not all there, a pointer leads elsewhere,
/// or the result is too large for a datagram.
std::optional<platform::Data> withQuestionOctets(platform::DataView datagram,
                                                 const DNSResourceRecord& record);

}  // namespace quillet
