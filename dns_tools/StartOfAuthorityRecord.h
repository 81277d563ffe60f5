#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "dns_tools/RecordType.h"
#include "dns_tools/ResourceRecord.h"

namespace DnsToolsSocket {

class Reader;

/// SOA (RFC 1035 section 3.3.13).
class StartOfAuthorityRecord final : public ResourceRecord {
 public:
  StartOfAuthorityRecord(std::string name, bool unique, std::uint16_t internetClass,
                         std::uint32_t ttl, std::string primaryServer, std::string mailbox,
                         std::uint32_t version, std::int32_t refreshSeconds,
                         std::int32_t retrySeconds, std::int32_t expireSeconds,
                         std::uint32_t minimumTTL);
  /// Reads RDLENGTH and RDATA; unusable when the reader fails.
  StartOfAuthorityRecord(Head&& head, Reader& reader);

  [[nodiscard]] std::uint16_t type() const override { return RecordType::startOfAuthority; }
  void describe(std::string& out) const override;
  [[nodiscard]] std::unique_ptr<ResourceRecord> clone() const override;

  std::string mname;
  std::string rname;
  std::uint32_t serial;
  /// Seconds, as `retry`, `expire` and `minimum`.
  std::int32_t refresh;
  std::int32_t retry;
  std::int32_t expire;
  std::uint32_t minimum;

 private:
  void writeData(Writer& writer) const override;
};

}  // namespace DnsToolsSocket
