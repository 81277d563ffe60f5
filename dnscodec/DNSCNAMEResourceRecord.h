#pragma once

#include <string>

#include "dnscodec/DNSTypedResourceRecord.h"

namespace quillet {

/// A CNAME record with its target as text (RFC 1035 section 3.3.1).
class DNSCNAMEResourceRecord final : public DNSTypedResourceRecord<DNSCNAMEResourceRecord> {
 public:
  /// Reads the target from the RDATA alone, without the message around it; one that cannot be read
  /// leaves the name empty.
  void decodeFromResource(const DNSResourceRecord& record) override;
  [[nodiscard]] platform::Data encodeData() const override;

  std::string canonicalName;
};

}  // namespace quillet
