#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "dns_tools/RecordType.h"
#include "dns_tools/ResourceRecord.h"

namespace DnsToolsSocket {

class Reader;

/// SRV (RFC 2782).
class ServiceRecord final : public ResourceRecord {
 public:
  ServiceRecord(std::string name, bool unique, std::uint16_t internetClass, std::uint32_t ttl,
                std::uint16_t itsPriority, std::uint16_t itsWeight, std::uint16_t itsPort,
                std::string itsServer);
  /// Reads RDLENGTH and RDATA; unusable when the reader fails.
  ServiceRecord(Head&& head, Reader& reader);

  [[nodiscard]] std::uint16_t type() const override { return RecordType::service; }
  void describe(std::string& out) const override;
  [[nodiscard]] std::unique_ptr<ResourceRecord> clone() const override;

  std::uint16_t priority;
  std::uint16_t weight;
  std::uint16_t port;
  std::string server;

 private:
  void writeData(Writer& writer) const override;
};

}  // namespace DnsToolsSocket
