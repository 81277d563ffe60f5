#pragma once

#include "dnscodec/DNSMessage.h"
#include "platform/foundation/Data.h"

namespace quillet {

/// Puts messages together.
class DNSMessageEncoder {
 public:
  /// The whole message. Its four counts are those of its lists (their low 16 bits).
  static platform::Data encode(const DNSMessage& message);
};

}  // namespace quillet
