#include "dnscodec/DNSResourceRecord.h"

namespace quillet {

using platform::Data;
using platform::DataView;

namespace {

// Type, class, TTL and RDLENGTH.
constexpr std::size_t kFixedSize = 10;

}  // namespace

void DNSResourceRecord::copyFromResource(const DNSResourceRecord& record) {
  name = record.name;
  type = record.type;
  resourceClass = record.resourceClass;
  ttl = record.ttl;
  decodeFromResource(record);
}

void DNSResourceRecord::decodeFromResource(const DNSResourceRecord& /*record*/) {}

Data DNSResourceRecord::encode() const {
  WireWriter writer(expectedSize());
  encodeTo(writer);
  return writer.finish();
}

void DNSResourceRecord::encodeTo(WireWriter& writer) const {
  encodeAs(writer, resourceClass, ttl, encodeData());
}

Data DNSResourceRecord::encodeData() const { return data; }

std::shared_ptr<DNSResourceRecord> DNSResourceRecord::copy() const {
  return std::shared_ptr<DNSResourceRecord>(new DNSResourceRecord(*this));
}

std::size_t DNSResourceRecord::expectedSize() const {
  return WireWriter::maxNameSize(name) + kFixedSize + data.size();
}

void DNSResourceRecord::encodeAs(WireWriter& writer, std::uint16_t classToWrite,
                                 std::uint32_t ttlToWrite, DataView rdata) const {
  if (rdata.size() > kMaxDataSize) {
    rdata = {};
  }
  writer.writeName(name);
  writer.writeUInt16(type);
  writer.writeUInt16(classToWrite);
  writer.writeUInt32(ttlToWrite);
  writer.writeUInt16(static_cast<std::uint16_t>(rdata.size()));
  writer.writeBytes(rdata);
}

}  // namespace quillet
