#include "dnscodec/DNSResourceRecord.h"

#include <utility>

#include "dnscodec/DNSLabel.h"
#include "dnscodec/WireReader.h"

namespace quillet {

using platform::Data;
using platform::DataView;

namespace {

// Type, class, TTL and RDLENGTH.
constexpr std::size_t kFixedSize = 10;

// The TTL of an OPT record.
constexpr int kExtendedRCodeShift = 24;
constexpr int kVersionShift = 16;
constexpr std::uint32_t kDnssecOk = 1U << 15;

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

void DNSCNAMEResourceRecord::decodeFromResource(const DNSResourceRecord& record) {
  std::uint32_t offset = 0;
  DNSLabelDecoder decoder;
  decoder.decodeLabelInBuffer(record.data, offset);
  canonicalName = decoder.name.value_or("");
}

Data DNSCNAMEResourceRecord::encodeData() const { return DNSLabelEncoder::encode(canonicalName); }

void DNSOPTResourceRecord::decodeFromResource(const DNSResourceRecord& record) {
  udpPayloadSize = record.resourceClass;
  extendedRCode = static_cast<std::uint8_t>(record.ttl >> kExtendedRCodeShift);
  version = static_cast<std::uint8_t>(record.ttl >> kVersionShift);
  dnssecOK = (record.ttl & kDnssecOk) != 0;
}

void DNSOPTResourceRecord::encodeTo(WireWriter& writer) const {
  const std::uint32_t fields = static_cast<std::uint32_t>(extendedRCode) << kExtendedRCodeShift |
                               static_cast<std::uint32_t>(version) << kVersionShift |
                               (dnssecOK ? kDnssecOk : 0);
  encodeAs(writer, udpPayloadSize, fields, data);
}

void DNSResourceRecordDecoder::decodeResourceInBuffer(DataView buffer, std::uint32_t& offset) {
  DecodeBudget budget;
  decodeResourceInBuffer(buffer, offset, budget);
}

void DNSResourceRecordDecoder::decodeResourceInBuffer(DataView buffer, std::uint32_t& offset,
                                                      DecodeBudget& budget) {
  DNSLabelDecoder label;
  label.decodeLabelInBuffer(buffer, offset, budget);
  if (!label.name) {
    return;
  }
  WireReader reader(buffer, offset);
  auto read = std::make_shared<DNSResourceRecord>();
  read->name = *std::move(label.name);
  read->type = reader.readUInt16();
  read->resourceClass = reader.readUInt16();
  read->ttl = reader.readUInt32();
  const auto data = reader.readBytes(reader.readUInt16());
  if (reader.failed()) {
    return;
  }
  read->data.assign(data.begin(), data.end());
  resource = std::move(read);
  offset = reader.offset();
}

}  // namespace quillet
