#include "dnscodec/DNSResourceRecordDecoder.h"

namespace quillet {

void DNSResourceRecordDecoder::decodeResourceInBuffer(platform::DataView buffer,
                                                      std::uint32_t& offset) {
  WireReader reader(buffer, offset, budget_ != nullptr ? *budget_ : own_);
  auto read = std::make_shared<DNSResourceRecord>();
  read->name = reader.readName();
  read->type = reader.readUInt16();
  read->resourceClass = reader.readUInt16();
  read->ttl = reader.readUInt32();
  const auto data = reader.readBytes(reader.readUInt16());
  if (!reader.failed()) {
    read->data.assign(data.begin(), data.end());
    resource = std::move(read);
    offset = static_cast<std::uint32_t>(reader.offset());
  }
}

}  // namespace quillet
