#include "dns_tools/RecordValue.h"

#include "dns_tools/AliasRecord.h"
#include "dns_tools/ClassWord.h"
#include "dns_tools/HostRecord.h"
#include "dns_tools/IPv4.h"
#include "dns_tools/IPv6.h"
#include "dns_tools/NameServerRecord.h"
#include "dns_tools/PointerRecord.h"
#include "dns_tools/Reader.h"
#include "dns_tools/Record.h"
#include "dns_tools/RecordType.h"
#include "dns_tools/ServiceRecord.h"
#include "dns_tools/StartOfAuthorityRecord.h"
#include "dns_tools/TextRecord.h"

namespace DnsToolsSocket {

namespace {

using Head = ResourceRecord::Head;

std::unique_ptr<ResourceRecord> readKind(std::uint16_t type, Head&& head, Reader& reader) {
  switch (type) {
    case RecordType::host:
      return std::make_unique<HostRecord<IPv4>>(std::move(head), reader);
    case RecordType::host6:
      return std::make_unique<HostRecord<IPv6>>(std::move(head), reader);
    case RecordType::nameServer:
      return std::make_unique<NameServerRecord>(std::move(head), reader);
    case RecordType::alias:
      return std::make_unique<AliasRecord>(std::move(head), reader);
    case RecordType::pointer:
      return std::make_unique<PointerRecord>(std::move(head), reader);
    case RecordType::startOfAuthority:
      return std::make_unique<StartOfAuthorityRecord>(std::move(head), reader);
    case RecordType::service:
      return std::make_unique<ServiceRecord>(std::move(head), reader);
    case RecordType::text:
      return std::make_unique<TextRecord>(std::move(head), reader);
    default:
      return std::make_unique<Record>(std::move(head), type, reader);
  }
}

}  // namespace

RecordValue RecordValue::read(Reader& reader) {
  Head head{.name = reader.readName()};
  const auto type = reader.readUInt16();
  const ClassWord word(reader.readUInt16());
  head.unique = word.unique();
  head.internetClass = word.internetClass();
  head.ttl = reader.readUInt32();
  return RecordValue(readKind(type, std::move(head), reader));
}

}  // namespace DnsToolsSocket
