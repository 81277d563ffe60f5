#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "dns_tools/RecordType.h"
#include "dns_tools/ResourceRecord.h"

namespace DnsToolsSocket {

class Reader;

/// NS (RFC 1035 section 3.3.11).
class NameServerRecord final : public ResourceRecord {
 public:
  NameServerRecord(std::string name, std::uint16_t type, std::uint16_t internetClass, bool unique,
                   std::uint32_t ttl, std::string server);
  /// Reads RDLENGTH and RDATA; unusable when the reader fails.
  NameServerRecord(Head&& head, Reader& reader);

  [[nodiscard]] std::uint16_t type() const override { return type_; }
  void setType(std::uint16_t type) { type_ = type; }
  void describe(std::string& out) const override;
  [[nodiscard]] std::unique_ptr<ResourceRecord> clone() const override;

  bool operator==(const NameServerRecord& other) const {
    return name() == other.name() && nameServer == other.nameServer;
  }

  std::string nameServer;

 private:
  void writeData(Writer& writer) const override;

  std::uint16_t type_;
};

}  // namespace DnsToolsSocket

/// By name server alone.
template <>
struct std::hash<DnsToolsSocket::NameServerRecord> {
  std::size_t operator()(const DnsToolsSocket::NameServerRecord& record) const {
    return std::hash<std::string>()(record.nameServer);
  }
};
