#pragma once

#include <cstdint>

#include "dnscodec/DNSTypedResourceRecord.h"

namespace quillet {

/// An EDNS OPT pseudo-record (RFC 6891 section 6.1): class and TTL carry fields of their own,
/// `data` the options.
class DNSOPTResourceRecord final : public DNSTypedResourceRecord<DNSOPTResourceRecord> {
 public:
  static constexpr std::uint16_t kType = 41;

  /// Takes the fields from class and TTL.
  void decodeFromResource(const DNSResourceRecord& record) override;
  /// Writes the fields in place of class and TTL.
  void encodeTo(WireWriter& writer) const override;

  std::uint16_t udpPayloadSize = 0;
  std::uint8_t extendedRCode = 0;
  std::uint8_t version = 0;
  bool dnssecOK = false;
};

}  // namespace quillet
