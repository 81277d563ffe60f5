#pragma once

#include <optional>

#include "dnscodec/DNSResourceRecord.h"
#include "netaddr/IPAddress.h"

namespace quillet {

/// An A record with its address as an object (RFC 1035 section 3.4.1); a record of 16 bytes has an
/// IPv6 address. Only `fromResource` makes one of what was decoded.
class DNSAResourceRecord final : public DNSTypedResourceRecord<DNSAResourceRecord> {
 public:
  /// Reads the address from the RDATA. RDATA of neither 4 nor 16 bytes throws as
  /// `IPAddress::addressWithData` does and leaves `ip` as it was: for a record from outside, be
  /// ready for it.
  void decodeFromResource(const DNSResourceRecord& record) override;
  /// The address's bytes; none without an address.
  [[nodiscard]] platform::Data encodeData() const override;

  /// Absent until a record has been decoded.
  std::optional<IPAddress> ip;
};

}  // namespace quillet
