#pragma once

#include <string>

#include "dnscodec/DNSResourceRecord.h"

namespace quillet {

/// A CNAME record with its target as text (RFC 1035 section 3.3.1).
class DNSCNAMEResourceRecord final : public DNSResourceRecord {
 public:
  /// Reads the target from the RDATA alone; one that points out of it leaves the name empty.
  void decodeFromResource(const DNSResourceRecord& record) override;
  [[nodiscard]] platform::Data encodeData() const override;
  [[nodiscard]] std::shared_ptr<DNSResourceRecord> copy() const override;

  std::string canonicalName;
};

}  // namespace quillet
