#include "dnscodec/DNSCNAMEResourceRecord.h"

#include "dnscodec/DNSLabelDecoder.h"
#include "dnscodec/DNSLabelEncoder.h"

namespace quillet {

void DNSCNAMEResourceRecord::decodeFromResource(const DNSResourceRecord& record) {
  std::uint32_t offset = 0;
  DNSLabelDecoder decoder;
  decoder.decodeLabelInBuffer(record.data, offset);
  canonicalName = decoder.name.value_or("");
}

platform::Data DNSCNAMEResourceRecord::encodeData() const {
  return DNSLabelEncoder::encode(canonicalName);
}

}  // namespace quillet
