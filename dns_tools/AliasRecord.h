#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "dns_tools/RecordType.h"
#include "dns_tools/ResourceRecord.h"

namespace DnsToolsSocket {

class Reader;

/// CNAME (RFC 1035 section 3.3.1).
class AliasRecord final : public ResourceRecord {
 public:
  AliasRecord(std::string name, bool unique, std::uint16_t internetClass, std::uint32_t ttl,
              std::string target);
  /// Reads RDLENGTH and RDATA; unusable when the reader fails.
  AliasRecord(Head&& head, Reader& reader);

  [[nodiscard]] std::uint16_t type() const override { return RecordType::alias; }
  void describe(std::string& out) const override;
  [[nodiscard]] std::unique_ptr<ResourceRecord> clone() const override;

  std::string canonicalName;

 private:
  void writeData(Writer& writer) const override;
};

}  // namespace DnsToolsSocket
