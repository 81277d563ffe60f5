#include "dnscodec/DNSLabelDecoder.h"

namespace quillet {

void DNSLabelDecoder::decodeLabelInBuffer(platform::DataView buffer, std::uint32_t& offset) {
  WireReader reader(buffer, offset, budget_ != nullptr ? *budget_ : own_);
  auto read = reader.readName();
  if (!reader.failed()) {
    name = std::move(read);
    offset = static_cast<std::uint32_t>(reader.offset());
  }
}

}  // namespace quillet
