#pragma once

#include <cstdint>

#include "dnscodec/DNSResourceRecord.h"

namespace quillet {

/// An EDNS OPT pseudo-record (RFC 6891 section 6.1): class and TTL carry fields of their own, `data` the
/// options.
class DNSOPTResourceRecord final : public DNSResourceRecord {
 public:
  static constexpr std::uint16_t kType = 41;

  /// Takes the fields from class and TTL.
  void decodeFromResource(const DNSResourceRecord& record) override;
  /// Writes the fields in place of class and TTL.
  [[nodiscard]] platform::Data encode() const override;
  [[nodiscard]] std::shared_ptr<DNSResourceRecord> copy() const override;

  std::uint16_t udpPayloadSize = 0;
  std::uint8_t extendedRCode = 0;
  std::uint8_t version = 0;
  bool dnssecOK = false;
};

}  // namespace quillet
