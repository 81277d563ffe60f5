#include "dnscodec/DNSResourceRecord.h"

#include "dnscodec/WireWriter.h"

namespace quillet {

using platform::Data;

namespace {

// Type, class, TTL and RDLENGTH.
constexpr std::size_t kFixedSize = 10;
constexpr std::size_t kMaxDataSize = 0xFFFF;

}  // namespace

void DNSResourceRecord::copyFromResource(const DNSResourceRecord& record) {
  name = record.name;
  type = record.type;
  resourceClass = record.resourceClass;
  ttl = record.ttl;
  decodeFromResource(record);
}

void DNSResourceRecord::decodeFromResource(const DNSResourceRecord& /*record*/) {}

Data DNSResourceRecord::encode() const { return encodeAs(resourceClass, ttl); }

Data DNSResourceRecord::encodeData() const { return data; }

std::shared_ptr<DNSResourceRecord> DNSResourceRecord::copy() const {
  return std::shared_ptr<DNSResourceRecord>(new DNSResourceRecord(*this));
}

Data DNSResourceRecord::encodeAs(std::uint16_t classToWrite, std::uint32_t ttlToWrite) const {
  auto rdata = encodeData();
  if (rdata.size() > kMaxDataSize) {
    rdata.clear();
  }
  Data bytes;
  bytes.reserve(name.size() + 2 + kFixedSize + rdata.size());
  WireWriter writer(bytes);
  writer.writeName(name);
  writer.writeUInt16(type);
  writer.writeUInt16(classToWrite);
  writer.writeUInt32(ttlToWrite);
  writer.writeUInt16(static_cast<std::uint16_t>(rdata.size()));
  writer.writeBytes(rdata);
  return bytes;
}

}  // namespace quillet
