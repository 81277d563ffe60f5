#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "dns_tools/RecordType.h"
#include "dns_tools/ResourceRecord.h"

namespace DnsToolsSocket {

class Reader;

/// TXT (RFC 1035 section 3.3.14), its strings of the form "key=value" as attributes (RFC 1464).
class TextRecord final : public ResourceRecord {
 public:
  using Attributes = std::map<std::string, std::string, std::less<>>;

  TextRecord(std::string name, bool unique, std::uint16_t internetClass, std::uint32_t ttl,
             Attributes pairs);
  /// Reads RDLENGTH and RDATA; unusable when the reader fails.
  TextRecord(Head&& head, Reader& reader);

  [[nodiscard]] std::uint16_t type() const override { return RecordType::text; }
  void describe(std::string& out) const override;
  [[nodiscard]] std::unique_ptr<ResourceRecord> clone() const override;

  /// Split at the first "="; of equal keys the last one counts.
  Attributes attributes;
  /// Strings without "="; read, never written.
  std::vector<std::string> values;

 private:
  void writeData(Writer& writer) const override;
};

}  // namespace DnsToolsSocket
