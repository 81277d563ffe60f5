#include "dnscodec/DNSResourceRecordDecoder.h"

#include <utility>

#include "dnscodec/DNSLabelDecoder.h"
#include "dnscodec/WireReader.h"

namespace quillet {

using platform::DataView;

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
