#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/foundation/Data.h"

namespace quillet {

/// A resource record whose RDATA is kept as bytes (RFC 1035 section 4.1.3). Decoding yields these whatever the
/// type; `fromResource` turns one into a record of a particular kind.
class DNSResourceRecord {
 public:
  DNSResourceRecord() = default;
  virtual ~DNSResourceRecord() = default;

  /// Takes name, type, class and TTL from `record`, then what `decodeFromResource` makes of it.
  void copyFromResource(const DNSResourceRecord& record);

  /// A record of `Kind` filled from a generic one.
  template <class Kind>
  static std::shared_ptr<Kind> fromResource(const DNSResourceRecord& record) {
    auto typed = std::make_shared<Kind>();
    typed->copyFromResource(record);
    return typed;
  }

  /// Fills the fields of the record's own kind; here there are none.
  virtual void decodeFromResource(const DNSResourceRecord& record);
  /// The whole record's wire bytes. RDATA beyond 65,535 octets is left out, with an RDLENGTH of 0.
  [[nodiscard]] virtual platform::Data encode() const;
  /// The RDATA to write.
  [[nodiscard]] virtual platform::Data encodeData() const;
  /// A copy of the same kind.
  [[nodiscard]] virtual std::shared_ptr<DNSResourceRecord> copy() const;

  std::string name;
  std::uint16_t type = 0;
  std::uint16_t resourceClass = 0;
  std::uint32_t ttl = 0;
  /// RDATA.
  platform::Data data;

 protected:
  // Copied by `copy` only, so that a record is never cut down to its base.
  DNSResourceRecord(const DNSResourceRecord&) = default;
  DNSResourceRecord& operator=(const DNSResourceRecord&) = default;
  DNSResourceRecord(DNSResourceRecord&&) = default;
  DNSResourceRecord& operator=(DNSResourceRecord&&) = default;

  /// The record's wire bytes with this class and TTL.
  [[nodiscard]] platform::Data encodeAs(std::uint16_t classToWrite, std::uint32_t ttlToWrite) const;
};

}  // namespace quillet
