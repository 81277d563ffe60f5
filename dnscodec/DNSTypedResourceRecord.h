#pragma once

#include <memory>

#include "dnscodec/DNSResourceRecord.h"

namespace quillet {

/// What every kind of record has for itself: how one is made from a generic record, and copied.
///
///     class DNSOPTResourceRecord final : public DNSTypedResourceRecord<DNSOPTResourceRecord>
template <class Kind>
class DNSTypedResourceRecord : public DNSResourceRecord {
 public:
  /// A record of this kind filled from a generic one.
  static std::shared_ptr<Kind> fromResource(const DNSResourceRecord& record) {
    return DNSResourceRecord::fromResource<Kind>(record);
  }

  [[nodiscard]] std::shared_ptr<DNSResourceRecord> copy() const final {
    return std::make_shared<Kind>(static_cast<const Kind&>(*this));
  }
};

}  // namespace quillet
