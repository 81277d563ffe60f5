#pragma once

#include "dnscodec/DNSHeader.h"
#include "dnscodec/WireWriter.h"
#include "platform/foundation/Data.h"

namespace quillet {

/// Writes headers.
class DNSHeaderEncoder {
 public:
  /// The 12 octets of a header, with the counts that it holds.
  static platform::Data encode(const DNSHeader& header);
  /// The same behind what the writer holds.
  static void encodeTo(WireWriter& writer, const DNSHeader& header);
};

}  // namespace quillet
