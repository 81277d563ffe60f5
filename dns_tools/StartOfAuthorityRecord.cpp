#include "dns_tools/StartOfAuthorityRecord.h"

#include <utility>

#include "dns_tools/Reader.h"
#include "dns_tools/StructureText.h"
#include "dns_tools/Writer.h"

namespace DnsToolsSocket {

StartOfAuthorityRecord::StartOfAuthorityRecord(std::string name, bool unique,
                                               std::uint16_t internetClass, std::uint32_t ttl,
                                               std::string primaryServer, std::string mailbox,
                                               std::uint32_t version, std::int32_t refreshSeconds,
                                               std::int32_t retrySeconds,
                                               std::int32_t expireSeconds, std::uint32_t minimumTTL)
    : ResourceRecord({std::move(name), unique, internetClass, ttl}),
      mname(std::move(primaryServer)),
      rname(std::move(mailbox)),
      serial(version),
      refresh(refreshSeconds),
      retry(retrySeconds),
      expire(expireSeconds),
      minimum(minimumTTL) {}

StartOfAuthorityRecord::StartOfAuthorityRecord(Head&& head, Reader& reader)
    : ResourceRecord(std::move(head)) {
  const auto end = reader.readDataEnd();
  mname = reader.readName();
  rname = reader.readName();
  serial = reader.readUInt32();
  refresh = static_cast<std::int32_t>(reader.readUInt32());
  retry = static_cast<std::int32_t>(reader.readUInt32());
  expire = static_cast<std::int32_t>(reader.readUInt32());
  minimum = reader.readUInt32();
  reader.expectDataEnd(end);
}

void StartOfAuthorityRecord::describe(std::string& out) const {
  StructureText text(out, "StartOfAuthorityRecord");
  describeHead(text);
  text.field("mname", mname)
      .field("rname", rname)
      .field("serial", serial)
      .field("refresh", refresh)
      .field("retry", retry)
      .field("expire", expire)
      .field("minimum", minimum);
}

std::unique_ptr<ResourceRecord> StartOfAuthorityRecord::clone() const {
  return std::make_unique<StartOfAuthorityRecord>(*this);
}

void StartOfAuthorityRecord::writeData(Writer& writer) const {
  writer.writeName(mname);
  writer.writeName(rname);
  writer.writeIntegers(serial, static_cast<std::uint32_t>(refresh),
                       static_cast<std::uint32_t>(retry), static_cast<std::uint32_t>(expire),
                       minimum);
}

}  // namespace DnsToolsSocket
