#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "dns_tools/RecordType.h"
#include "dns_tools/ResourceRecord.h"

namespace DnsToolsSocket {

class Reader;

/// PTR (RFC 1035 section 3.3.12).
class PointerRecord final : public ResourceRecord {
 public:
  PointerRecord(std::string name, bool unique, std::uint16_t internetClass, std::uint32_t ttl,
                std::string target);
  /// Reads RDLENGTH and RDATA; unusable when the reader fails.
  PointerRecord(Head&& head, Reader& reader);

  [[nodiscard]] std::uint16_t type() const override { return RecordType::pointer; }
  void describe(std::string& out) const override;
  [[nodiscard]] std::unique_ptr<ResourceRecord> clone() const override;

  bool operator==(const PointerRecord& other) const {
    return name() == other.name() && destination == other.destination;
  }

  std::string destination;

 private:
  void writeData(Writer& writer) const override;
};

}  // namespace DnsToolsSocket

/// By destination alone.
template <>
struct std::hash<DnsToolsSocket::PointerRecord> {
  std::size_t operator()(const DnsToolsSocket::PointerRecord& record) const {
    return std::hash<std::string>()(record.destination);
  }
};
