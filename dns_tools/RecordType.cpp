#include "dns_tools/RecordType.h"

namespace DnsToolsSocket {

namespace {

struct NamedType {
  std::uint16_t type;
  std::string_view text;
};

constexpr NamedType kNamedTypes[] = {
    {RecordType::host, "A"},
    {RecordType::nameServer, "NS"},
    {RecordType::alias, "CNAME"},
    {RecordType::startOfAuthority, "SOA"},
    {RecordType::pointer, "PTR"},
    {RecordType::mailExchange, "MX"},
    {RecordType::text, "TXT"},
    {RecordType::host6, "AAAA"},
    {RecordType::service, "SRV"},
    {RecordType::SVCB, "SVCB"},
    {RecordType::HTTPSSVC, "HTTPSSVC"},
    {RecordType::incrementalZoneTransfer, "IXFR"},
    {RecordType::standardZoneTransfer, "AXFR"},
    {RecordType::all, "*"},
};

}  // namespace

std::string_view typeDescription(std::uint16_t type) {
  for (const auto& named : kNamedTypes) {
    if (named.type == type) {
      return named.text;
    }
  }
  return "Unknown";
}

}  // namespace DnsToolsSocket
