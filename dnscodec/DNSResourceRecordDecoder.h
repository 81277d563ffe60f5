#pragma once

#include <cstdint>
#include <memory>

#include "dnscodec/DNSResourceRecord.h"
#include "dnscodec/DecodeBudget.h"
#include "platform/foundation/Data.h"

namespace quillet {

/// Reads one resource record as a plain one, whatever its type. Made fresh for each.
class DNSResourceRecordDecoder {
 public:
  /// Reads the record at `offset` and moves it behind the record. A broken one leaves `resource`
  /// unset.
  void decodeResourceInBuffer(platform::DataView buffer, std::uint32_t& offset);
  /// The same, charged to the budget of a whole message.
  void decodeResourceInBuffer(platform::DataView buffer, std::uint32_t& offset,
                              DecodeBudget& budget);

  std::shared_ptr<DNSResourceRecord> resource;
};

}  // namespace quillet
