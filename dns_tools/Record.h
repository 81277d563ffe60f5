#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "dns_tools/ResourceRecord.h"

namespace DnsToolsSocket {

class Reader;

/// A record of any type that has no kind of its own; OPT (RFC 6891) is one. Keeps its RDATA as it
/// is.
class Record final : public ResourceRecord {
 public:
  Record(std::string name, bool unique, std::uint16_t internetClass, std::uint32_t ttl,
         std::uint16_t type, platform::Data bytes);
  /// Reads RDLENGTH and RDATA; unusable when the reader fails.
  Record(Head&& head, std::uint16_t type, Reader& reader);

  [[nodiscard]] std::uint16_t type() const override { return type_; }
  void setType(std::uint16_t type) { type_ = type; }
  void describe(std::string& out) const override;
  [[nodiscard]] std::unique_ptr<ResourceRecord> clone() const override;

  /// RDATA.
  platform::Data data;

 private:
  void writeData(Writer& writer) const override;

  std::uint16_t type_;
};

}  // namespace DnsToolsSocket
