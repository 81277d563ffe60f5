#include "dnscodec/DNSQuestionDecoder.h"

#include <utility>

#include "dnscodec/DNSLabelDecoder.h"
#include "dnscodec/WireReader.h"

namespace quillet {

using platform::DataView;

void DNSQuestionDecoder::decodeQuestionInBuffer(DataView buffer, std::uint32_t& offset) {
  DecodeBudget budget;
  decodeQuestionInBuffer(buffer, offset, budget);
}

void DNSQuestionDecoder::decodeQuestionInBuffer(DataView buffer, std::uint32_t& offset,
                                                DecodeBudget& budget) {
  DNSLabelDecoder label;
  label.decodeLabelInBuffer(buffer, offset, budget);
  if (!label.name) {
    return;
  }
  WireReader reader(buffer, offset);
  const std::uint16_t type = reader.readUInt16();
  const std::uint16_t questionClass = reader.readUInt16();
  if (reader.failed()) {
    return;
  }
  question =
      std::make_shared<DNSQuestion>(DNSQuestion{*std::move(label.name), type, questionClass});
  offset = reader.offset();
}

}  // namespace quillet
