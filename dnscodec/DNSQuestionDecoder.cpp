#include "dnscodec/DNSQuestionDecoder.h"

namespace quillet {

void DNSQuestionDecoder::decodeQuestionInBuffer(platform::DataView buffer, std::uint32_t& offset) {
  WireReader reader(buffer, offset, budget_ != nullptr ? *budget_ : own_);
  auto read = std::make_shared<DNSQuestion>();
  read->name = reader.readName();
  read->type = reader.readUInt16();
  read->questionClass = reader.readUInt16();
  if (!reader.failed()) {
    question = std::move(read);
    offset = static_cast<std::uint32_t>(reader.offset());
  }
}

}  // namespace quillet
