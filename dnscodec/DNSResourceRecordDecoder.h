#pragma once

#include <cstdint>
#include <memory>

#include "dnscodec/DNSResourceRecord.h"
#include "dnscodec/WireReader.h"
#include "platform/foundation/Data.h"

namespace quillet {

/// Reads one resource record as a plain one, whatever its type. Made fresh for each.
class DNSResourceRecordDecoder {
 public:
  DNSResourceRecordDecoder() = default;
  /// Charges what it reads to the budget of a whole message.
  explicit DNSResourceRecordDecoder(DecodeBudget& shared) : budget_(&shared) {}

  /// Reads the record at `offset` and moves it behind the record. A broken one leaves `resource` unset.
  void decodeResourceInBuffer(platform::DataView buffer, std::uint32_t& offset);

  std::shared_ptr<DNSResourceRecord> resource;

 private:
  DecodeBudget own_;
  DecodeBudget* budget_ = nullptr;
};

}  // namespace quillet
