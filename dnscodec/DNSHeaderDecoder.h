#pragma once

#include <cstdint>
#include <optional>

#include "dnscodec/DNSHeader.h"
#include "platform/foundation/Data.h"

namespace quillet {

/// Reads one header. Made fresh for each.
class DNSHeaderDecoder {
 public:
  /// Reads the 12 octets from `offset` on and moves it behind them. Fewer leave `header` unset.
  void decodeHeaderInBuffer(platform::DataView buffer, std::uint32_t& offset);

  std::optional<DNSHeader> header;
};

}  // namespace quillet
